// A TCP listener on 127.0.0.1, on a port the system picks, that counts the connections made to
// it. It accepts and closes each one at once, so a client that does connect fails quickly instead
// of waiting for an answer.
#ifndef ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_
#define ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_

#include <atomic>

#include "support/loopback_server.h"

namespace zenutl_test {

class LocalListener {
 public:
  int Connections() const { return connections_; }
  // "http://127.0.0.1:<port>/<path>", and the same with another scheme.
  std::string Url(const std::string& path, const std::string& scheme = "http") const {
    return server_.Url(path, scheme);
  }

 private:
  std::atomic<int> connections_{0};
  LoopbackServer server_{[this](int) { ++connections_; }};
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_

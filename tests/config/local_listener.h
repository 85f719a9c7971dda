// A TCP listener on 127.0.0.1, on a port the system picks, that counts the connections made to
// it. It accepts and closes each one at once, so a client that does connect fails quickly instead
// of waiting for an answer.
#ifndef ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_
#define ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

namespace zenutl_test {

class LocalListener {
 public:
  LocalListener() {
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    if (socket_ < 0) throw std::runtime_error("socket failed");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket_, 16) != 0 ||
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
      ::close(socket_);
      throw std::runtime_error("bind/listen failed");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
  }
  ~LocalListener() {
    stop_ = true;
    thread_.join();
    ::close(socket_);
  }
  LocalListener(const LocalListener&) = delete;
  LocalListener& operator=(const LocalListener&) = delete;

  int Connections() const { return connections_; }
  // "http://127.0.0.1:<port>/<path>", and the same with another scheme.
  std::string Url(const std::string& path, const std::string& scheme = "http") const {
    return scheme + "://127.0.0.1:" + std::to_string(port_) + "/" + path;
  }

 private:
  void Serve() {
    while (!stop_) {
      pollfd waiting{socket_, POLLIN, 0};
      if (::poll(&waiting, 1, 20) > 0) {
        const int client = ::accept(socket_, nullptr, nullptr);
        if (client >= 0) {
          ++connections_;
          ::close(client);
        }
      }
    }
  }

  int socket_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::atomic<int> connections_{0};
  std::thread thread_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONFIG_LOCAL_LISTENER_H_

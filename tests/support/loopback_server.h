// A TCP server on 127.0.0.1, on a port the system picks, that hands each connection to a
// function on a thread of its own and closes it afterwards. The base of the test servers that
// prove what the library fetches (or never fetches) and of the one that feeds the browser.
#ifndef ZENUTL_TESTS_SUPPORT_LOOPBACK_SERVER_H_
#define ZENUTL_TESTS_SUPPORT_LOOPBACK_SERVER_H_

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

namespace zenutl_test {

class LoopbackServer {
 public:
  explicit LoopbackServer(std::function<void(int client)> answer) : answer_(std::move(answer)) {
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    if (socket_ < 0) throw std::runtime_error("socket failed");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
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
  ~LoopbackServer() {
    stop_ = true;
    thread_.join();
    ::close(socket_);
  }
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  // "http://127.0.0.1:<port>/<path>", and the same with another scheme.
  std::string Url(const std::string& path, const std::string& scheme = "http") const {
    return scheme + "://127.0.0.1:" + std::to_string(port_) + "/" + path;
  }

 private:
  void Serve() {
    while (!stop_) {
      pollfd waiting{socket_, POLLIN, 0};
      if (::poll(&waiting, 1, 20) <= 0) continue;
      const int client = ::accept(socket_, nullptr, nullptr);
      if (client < 0) continue;
      answer_(client);
      ::close(client);
    }
  }

  std::function<void(int)> answer_;
  int socket_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_LOOPBACK_SERVER_H_

// A minimal HTTP server on 127.0.0.1, on a port the system picks, that serves the files of one
// folder to GET requests: enough for a browser to open a page and what it refers to, since a
// browser won't apply a stylesheet to a file it opened from the disk.
#ifndef ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_
#define ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/temp_dir.h"

namespace zenutl_test {

class LocalFileServer {
 public:
  explicit LocalFileServer(const std::string& folder) : folder_(folder) {
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
  ~LocalFileServer() {
    stop_ = true;
    thread_.join();
    ::close(socket_);
  }
  LocalFileServer(const LocalFileServer&) = delete;
  LocalFileServer& operator=(const LocalFileServer&) = delete;

  std::string Url(const std::string& name) const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/" + name;
  }

 private:
  void Serve() {
    while (!stop_) {
      pollfd waiting{socket_, POLLIN, 0};
      if (::poll(&waiting, 1, 50) <= 0) continue;
      const int client = ::accept(socket_, nullptr, nullptr);
      if (client < 0) continue;
      Answer(client);
      ::close(client);
    }
  }

  // Reads the request head and answers with the file it names, or 404. Names are plain file
  // names of the folder: anything with a slash or ".." is not found.
  void Answer(int client) {
    std::string request;
    char buffer[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
      pollfd readable{client, POLLIN, 0};
      if (::poll(&readable, 1, 2000) <= 0) return;
      const ssize_t got = ::read(client, buffer, sizeof buffer);
      if (got <= 0) return;
      request.append(buffer, static_cast<std::size_t>(got));
    }
    std::string name;
    if (request.compare(0, 5, "GET /") == 0) name = request.substr(5, request.find(' ', 5) - 5);
    const bool plain = !name.empty() && name.find('/') == std::string::npos &&
                       name.find("..") == std::string::npos;
    const std::string path = folder_ + "/" + name;
    std::string body;
    std::string status = "404 Not Found";
    if (plain && ::access(path.c_str(), R_OK) == 0) {
      body = ReadWholeFile(path);
      status = "200 OK";
    }
    const std::string head = "HTTP/1.0 " + status + "\r\nContent-Type: " + TypeOf(name) +
                             "\r\nContent-Length: " + std::to_string(body.size()) +
                             "\r\nConnection: close\r\n\r\n";
    const std::string answer = head + body;
    for (std::size_t sent = 0; sent < answer.size();) {
      const ssize_t put = ::send(client, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL);
      if (put <= 0) return;
      sent += static_cast<std::size_t>(put);
    }
  }

  static std::string TypeOf(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : name.substr(dot);
    if (extension == ".xml" || extension == ".xsl") return "text/xml";
    if (extension == ".html") return "text/html";
    return "application/octet-stream";
  }

  std::string folder_;
  int socket_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_

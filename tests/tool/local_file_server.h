// A minimal HTTP server on 127.0.0.1, on a port the system picks, that serves the files of one
// folder to GET requests: enough for a browser to open a page and what it refers to, since a
// browser won't apply a stylesheet to a file it opened from the disk.
#ifndef ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_
#define ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "support/loopback_server.h"
#include "support/temp_dir.h"

namespace zenutl_test {

class LocalFileServer {
 public:
  explicit LocalFileServer(const std::string& folder) : folder_(folder) {}

  std::string Url(const std::string& name) const { return server_.Url(name); }

 private:
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
  LoopbackServer server_{[this](int client) { Answer(client); }};
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_TOOL_LOCAL_FILE_SERVER_H_

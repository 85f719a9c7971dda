// Probes that tell whether the code under test opened a file.
//
// `OpenWatch` watches a marker file with inotify and counts every open of it, by anyone.
// `FifoProbe` is a FIFO whose helper thread offers itself as the writer: a reader that opens it
// is counted, given `content` and the end of the data at once, so code that wrongly opens it
// fails its test instead of hanging the test program.
#ifndef ZENUTL_TESTS_CONFIG_FILE_PROBES_H_
#define ZENUTL_TESTS_CONFIG_FILE_PROBES_H_

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace zenutl_test {

class OpenWatch {
 public:
  explicit OpenWatch(const std::string& path) : fd_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (fd_ < 0 || ::inotify_add_watch(fd_, path.c_str(), IN_OPEN) < 0) {
      throw std::runtime_error("inotify failed for " + path);
    }
  }
  ~OpenWatch() { ::close(fd_); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  // Opens seen since the watch began.
  int Opens() {
    alignas(inotify_event) char buffer[4096];
    for (ssize_t got; (got = ::read(fd_, buffer, sizeof buffer)) > 0;) {
      for (char* at = buffer; at < buffer + got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(at);
        if (event->mask & IN_OPEN) ++opens_;
        at += sizeof(inotify_event) + event->len;
      }
    }
    return opens_;
  }

 private:
  int fd_;
  int opens_ = 0;
};

class FifoProbe {
 public:
  explicit FifoProbe(const std::string& path, const std::string& content = "")
      : path_(path), content_(content) {
    if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("mkfifo failed for " + path);
    thread_ = std::thread([this] { Serve(); });
  }
  ~FifoProbe() {
    stop_ = true;
    thread_.join();
  }
  FifoProbe(const FifoProbe&) = delete;
  FifoProbe& operator=(const FifoProbe&) = delete;

  int Opens() const { return opens_; }

 private:
  void Serve() {
    while (!stop_) {
      // Succeeds only while a reader has the FIFO open (or waits in open for a writer).
      const int fd = ::open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
      if (fd >= 0) {
        ++opens_;
        const ssize_t written = ::write(fd, content_.data(), content_.size());
        (void)written;  // a reader that has gone away is no failure of the probe
        ::close(fd);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  const std::string path_;
  const std::string content_;
  std::atomic<bool> stop_{false};
  std::atomic<int> opens_{0};
  std::thread thread_;
};

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_CONFIG_FILE_PROBES_H_

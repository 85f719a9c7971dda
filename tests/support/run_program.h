// Runs another program as a user would, from a test: arguments, text on its standard input, and
// what it writes to its standard output and error, with its exit status.
//
// For command-line tools and for outside programs such as a browser. The program's standard
// error can be a pseudo-terminal instead of a pipe, for output that a program shows only on a
// terminal. A program that runs past its time limit is killed.
#ifndef ZENUTL_TESTS_SUPPORT_RUN_PROGRAM_H_
#define ZENUTL_TESTS_SUPPORT_RUN_PROGRAM_H_

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

namespace zenutl_test {

struct ProgramResult {
  int status = -1;  // the exit status; 128 + the signal for a program that was killed
  std::string out;
  std::string err;
};

struct ProgramOptions {
  std::string input;             // written to the standard input, which is then closed
  bool errorOnTerminal = false;  // standard error on a pseudo-terminal
  int timeoutSeconds = 120;
};

inline ProgramResult RunProgram(const std::vector<std::string>& args,
                                const ProgramOptions& options = ProgramOptions()) {
  ProgramResult result;
  int in[2], out[2], err[2];
  if (::pipe(in) != 0 || ::pipe(out) != 0) return result;
  if (options.errorOnTerminal) {
    if (::openpty(&err[0], &err[1], nullptr, nullptr, nullptr) != 0) return result;
  } else if (::pipe(err) != 0) {
    return result;
  }
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(in[0], STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(err[1], STDERR_FILENO);
    for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]}) ::close(fd);
    std::vector<char*> argv;
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(in[0]);
  ::close(out[1]);
  ::close(err[1]);
  ::signal(SIGPIPE, SIG_IGN);
  std::size_t written = 0;
  int writeFd = in[1];
  if (options.input.empty()) {
    ::close(writeFd);
    writeFd = -1;
  } else {
    ::fcntl(writeFd, F_SETFL, O_NONBLOCK);
  }
  int readFds[2] = {out[0], err[0]};
  std::string* sinks[2] = {&result.out, &result.err};
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(options.timeoutSeconds);
  while (readFds[0] >= 0 || readFds[1] >= 0) {
    pollfd polls[3] = {{readFds[0], POLLIN, 0}, {readFds[1], POLLIN, 0}, {writeFd, POLLOUT, 0}};
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(child, SIGKILL);
      break;
    }
    if (::poll(polls, 3, 200) < 0 && errno != EINTR) break;
    for (int i = 0; i < 2; ++i) {
      if (readFds[i] < 0 || polls[i].revents == 0) continue;
      char buffer[65536];
      const ssize_t got = ::read(readFds[i], buffer, sizeof buffer);
      if (got > 0) {
        sinks[i]->append(buffer, static_cast<std::size_t>(got));
      } else if (got == 0 || errno != EINTR) {  // a terminal whose other side closed gives EIO
        ::close(readFds[i]);
        readFds[i] = -1;
      }
    }
    if (writeFd >= 0 && polls[2].revents != 0) {
      const ssize_t put =
          ::write(writeFd, options.input.data() + written, options.input.size() - written);
      if (put > 0) written += static_cast<std::size_t>(put);
      if (put < 0 && errno != EAGAIN && errno != EINTR) written = options.input.size();
      if (written == options.input.size()) {
        ::close(writeFd);
        writeFd = -1;
      }
    }
  }
  for (int fd : {readFds[0], readFds[1], writeFd}) {
    if (fd >= 0) ::close(fd);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) == -1 && errno == EINTR) {
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_RUN_PROGRAM_H_

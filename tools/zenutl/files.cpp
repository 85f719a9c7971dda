#include "files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <iterator>
#include <sstream>

#include "command_line.h"

namespace zenutl_tool {

std::string DisplayName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::string SystemErrorText(const std::string& path, int error) {
  return DisplayName(path) + ": " + std::strerror(error);
}

void OpenInputFile(const std::string& path, std::ifstream& stream) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) throw FileError(SystemErrorText(path, errno));
  if (S_ISDIR(status.st_mode)) throw FileError(SystemErrorText(path, EISDIR));
  errno = 0;
  stream.open(path, std::ios::in | std::ios::binary);
  if (!stream) throw FileError(SystemErrorText(path, errno ? errno : EACCES));
}

unsigned long long FileSize(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<unsigned long long>(status.st_size);
}

std::string ReadWholeInput(const std::string& path) {
  std::ostringstream content;
  if (path == "-") {
    content << std::cin.rdbuf();
    if (std::cin.bad()) throw FileError(SystemErrorText(path, EIO));
    return content.str();
  }
  std::ifstream stream;
  OpenInputFile(path, stream);
  std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (stream.bad()) throw FileError(SystemErrorText(path, EIO));
  return text;
}

void WriteWholeOutput(const std::string& path, const std::string& text) {
  if (path.empty() || path == "-") {
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    return;
  }
  errno = 0;
  std::ofstream stream(path, std::ios::out | std::ios::binary | std::ios::trunc);
  if (!stream) throw FileError(SystemErrorText(path, errno ? errno : EACCES));
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  stream.close();
  if (!stream) throw FileError(SystemErrorText(path, errno ? errno : EIO));
}

}  // namespace zenutl_tool

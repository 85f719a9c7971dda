// A fresh temporary folder for one test, removed with everything in it afterwards.
#ifndef ZENUTL_TESTS_SUPPORT_TEMP_DIR_H_
#define ZENUTL_TESTS_SUPPORT_TEMP_DIR_H_

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <fstream>
#include <sstream>
#include <string>

namespace zenutl_test {

class TempDir {
 public:
  // In the system's temporary folder, or in `parent` (e.g. "/dev/shm", a file system of its
  // own).
  explicit TempDir(
      const boost::filesystem::path& parent = boost::filesystem::temp_directory_path()) {
    path_ = parent / boost::filesystem::unique_path("zenutl-test-%%%%-%%%%-%%%%");
    boost::filesystem::create_directories(path_);
  }
  ~TempDir() {
    boost::system::error_code ignored;
    boost::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const boost::filesystem::path& path() const { return path_; }
  // A path inside the folder, in Linux form.
  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  boost::filesystem::path path_;
};

// A test fixture that gives each test its own folder.
class TempDirTest : public ::testing::Test {
 protected:
  std::string File(const std::string& name) const { return dir_.File(name); }
  const boost::filesystem::path& Dir() const { return dir_.path(); }

 private:
  TempDir dir_;
};

inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

inline void WriteWholeFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_SUPPORT_TEMP_DIR_H_

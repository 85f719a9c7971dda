// A temporary folder for the files a benchmark works on, removed with them afterwards.
#ifndef ZENUTL_BENCH_SCRATCH_FOLDER_H_
#define ZENUTL_BENCH_SCRATCH_FOLDER_H_

#include <boost/filesystem.hpp>
#include <string>

namespace zenutl_bench {

class ScratchFolder {
 public:
  ScratchFolder()
      : path_(boost::filesystem::temp_directory_path() /
              boost::filesystem::unique_path("zenutl-bench-%%%%-%%%%")) {
    boost::filesystem::create_directories(path_);
  }
  ~ScratchFolder() {
    boost::system::error_code ignored;
    boost::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  boost::filesystem::path path_;
};

}  // namespace zenutl_bench

#endif  // ZENUTL_BENCH_SCRATCH_FOLDER_H_

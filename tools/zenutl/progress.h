// A progress line for long work, drawn on standard error only when that is a terminal: piped or
// redirected output never holds it. The line is redrawn in place at most ten times a second and
// erased when the work ends, so what remains on the screen is the command's own output.
#ifndef ZENUTL_TOOLS_ZENUTL_PROGRESS_H_
#define ZENUTL_TOOLS_ZENUTL_PROGRESS_H_

#include <chrono>
#include <functional>
#include <streambuf>
#include <string>
#include <vector>

namespace zenutl_tool {

class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  bool IsShown() const { return mEnabled; }
  // Replaces the line's text; the first text shows at once, later ones when a tenth of a second
  // has passed since the last drawing.
  void Update(const std::string& text);
  // Erases the line; the next Update draws again at once.
  void Clear();

 private:
  bool mEnabled;
  bool mDrawn = false;
  std::chrono::steady_clock::time_point mLastDrawn;
};

// A read-only stream buffer over another one that tells how many bytes have been taken from it,
// so that a parser reading a file can show how far it got.
class CountingStreamBuf : public std::streambuf {
 public:
  CountingStreamBuf(std::streambuf& source, std::function<void(unsigned long long)> onRead);

 protected:
  int_type underflow() override;

 private:
  std::streambuf& mSource;
  std::function<void(unsigned long long)> mOnRead;
  std::vector<char> mBuffer;
  unsigned long long mTotal = 0;
};

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_PROGRESS_H_

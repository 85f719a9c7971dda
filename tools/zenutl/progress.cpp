#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace zenutl_tool {

ProgressLine::ProgressLine() : mEnabled(::isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() {
  Clear();
}

void ProgressLine::Update(const std::string& text) {
  if (!mEnabled) return;
  const auto now = std::chrono::steady_clock::now();
  if (mDrawn && now - mLastDrawn < std::chrono::milliseconds(100)) return;
  // Carriage return, the text, then erase to the end of the line: a shorter text leaves no tail.
  std::fprintf(stderr, "\r%s\033[K", text.c_str());
  std::fflush(stderr);
  mDrawn = true;
  mLastDrawn = now;
}

void ProgressLine::Clear() {
  if (!mEnabled || !mDrawn) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  mDrawn = false;
}

CountingStreamBuf::CountingStreamBuf(std::streambuf& source,
                                     std::function<void(unsigned long long)> onRead)
    : mSource(source), mOnRead(std::move(onRead)), mBuffer(1 << 16) {}

CountingStreamBuf::int_type CountingStreamBuf::underflow() {
  const std::streamsize got =
      mSource.sgetn(mBuffer.data(), static_cast<std::streamsize>(mBuffer.size()));
  if (got <= 0) return traits_type::eof();
  setg(mBuffer.data(), mBuffer.data(), mBuffer.data() + got);
  mTotal += static_cast<unsigned long long>(got);
  if (mOnRead) mOnRead(mTotal);
  return traits_type::to_int_type(mBuffer[0]);
}

}  // namespace zenutl_tool

#include "zenutl/stream_reader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "zenutl/stream_writer.h"

// The largest single allocation made while gTrackAllocations is set: the whole program's
// allocations pass through here, so that a test can see what a damaged length asks for.
namespace {
bool gTrackAllocations = false;
std::size_t gLargestAllocation = 0;

void* Allocate(std::size_t size) {
  if (gTrackAllocations && size > gLargestAllocation) gLargestAllocation = size;
  return std::malloc(size == 0 ? 1 : size);
}
}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

namespace {

using zenutl_test::Bytes;

class StreamReaderTest : public zenutl_test::TempDirTest {
 protected:
  void OnBoth(const std::string& bytes, const zenutl_test::ReadSteps& read) {
    zenutl_test::ReadFromBoth(File("in.bin"), bytes, read);
  }
};

// The number forms' failures are tested with their encodings, in stream_writer_test.cpp.
TEST_F(StreamReaderTest, ATextFailsAsItsLengthOrAsItsBytesAndAVectorAsItsElement) {
  const std::string cut = Bytes({3, 0, 0, 0}) + "ab";  // three bytes announced, two there
  OnBoth(cut.substr(0, 3), [](StreamReader& r) {
    EXPECT_THROW_WHY(r.ReadString(), StreamException, "ReadUInt32 failed");
  });
  OnBoth(cut, [](StreamReader& r) {
    EXPECT_THROW_WHY(r.ReadString(), StreamException, "ReadString failed");
  });
  OnBoth(cut, [](StreamReader& r) {
    std::string texts[1];
    EXPECT_THROW_WHY(r.ReadStdStringVector(texts, 1), StreamException, "ReadStdString failed");
  });
}

TEST_F(StreamReaderTest, ANonzeroByteReadsAsTrue) {
  OnBoth(Bytes({2, 0, 0xFF, 1}), [](StreamReader& r) {
    EXPECT_TRUE(r.ReadBool());
    bool flags[3];
    r.ReadBoolVector(flags, 3);
    EXPECT_EQ(std::vector<bool>(flags, flags + 3), std::vector<bool>({false, true, true}));
  });
}

TEST_F(StreamReaderTest, ALengthClaimingGigabytesFailsAtTheEndOfTheDataWithoutAskingForThem) {
  const std::string tail(100, 'x');
  const struct {
    const char* message;
    std::string bytes;
    zenutl_test::ReadSteps read;
  } cases[] = {
      {"ReadStdString failed", Bytes({0xFF, 0xFF, 0xFF, 0xFF}) + tail,
       [](StreamReader& r) { r.ReadStdString(); }},
      {"ReadString failed", Bytes({0xFF, 0xFF, 0xFF, 0x7F}) + tail,
       [](StreamReader& r) { r.ReadString(); }},
      // A CString cannot hold 2^31 bytes or more, so that length fails at once.
      {"ReadString failed", Bytes({0, 0, 0, 0x80}) + tail, [](StreamReader& r) { r.ReadString(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    OnBoth(c.bytes, [&](StreamReader& r) {
      gLargestAllocation = 0;
      gTrackAllocations = true;
      EXPECT_THROW_WHY(c.read(r), StreamException, c.message);
      gTrackAllocations = false;
      EXPECT_LT(gLargestAllocation, 1u << 20);
    });
  }
}

TEST_F(StreamReaderTest, ALongTextArrivesWholeThroughTheGrowingSteps) {
  std::string text(300000, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i % 251);
  std::ostringstream out;
  StreamWriter(out).WriteStdString(text);
  OnBoth(out.str(), [&](StreamReader& r) { EXPECT_TRUE(r.ReadStdString() == text); });
}

TEST_F(StreamReaderTest, TellAndSeekWorkOnBothAndRefuseANegativePosition) {
  OnBoth("abcdef", [](StreamReader& r) {
    EXPECT_EQ(r.ReadChar(), 'a');
    EXPECT_EQ(r.Tell(), 1);
    EXPECT_THROW_WHY(r.Seek(-1), StreamException, "Seek failed.");
    EXPECT_EQ(r.ReadChar(), 'b');  // the stream was not touched
    r.Seek(4);
    EXPECT_EQ(r.ReadChar(), 'e');
    r.Seek(0);
    EXPECT_EQ(r.ReadInt16(), 'a' | 'b' << 8);
  });
  // The reader itself keeps no error: after a failure the next read tries again. (A
  // std::istream keeps its own failbit until it is cleared.)
  zenutl_test::ReadFromArchive(File("in.bin"), "abc", [](StreamReader& r) {
    EXPECT_THROW_WHY(r.ReadInt32(), StreamException, "ReadInt32 failed");
    r.Seek(1);
    EXPECT_EQ(r.ReadChar(), 'b');
  });
  std::istringstream failed("abc");
  failed.setstate(std::ios::failbit);
  EXPECT_THROW_WHY(StreamReader(failed).Tell(), StreamException, "Tell failed.");
}

TEST_F(StreamReaderTest, EachSideRefusesAnArchiveOfTheOtherDirection) {
  zenutl_test::WriteWholeFile(File("in.bin"), "x");
  CFile file(File("in.bin").c_str(), CFile::modeReadWrite);
  CArchive storing(&file, CArchive::store);
  CArchive loading(&file, CArchive::load);
  EXPECT_THROW_WHY(StreamReader reader(storing), StreamException, "Wrong CArchive mode");
  EXPECT_THROW_WHY(StreamWriter writer(loading), StreamException, "Wrong CArchive mode");
}

// A stream buffer that throws what it is given, as a caller's own buffer might.
template <typename Thrown>
class ThrowingBuffer : public std::streambuf {
 protected:
  int_type underflow() override { throw Thrown("from the buffer"); }
};

TEST_F(StreamReaderTest, ALibraryExceptionFromTheStreamBecomesTheOperationsFailure) {
  ThrowingBuffer<Exception> plain;
  std::istream fromPlain(&plain);
  fromPlain.exceptions(std::ios::badbit);
  EXPECT_THROW_WHY(StreamReader(fromPlain).ReadDouble(), StreamException, "ReadDouble failed");
  ThrowingBuffer<StreamException> stream;
  std::istream fromStream(&stream);
  fromStream.exceptions(std::ios::badbit);
  EXPECT_THROW_WHY(StreamReader(fromStream).ReadDouble(), StreamException, "from the buffer");
}

}  // namespace

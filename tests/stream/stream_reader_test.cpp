#include "zenutl/stream_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
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
  // Runs `read` on `bytes` from a stream and from an archive on a file.
  void OnBoth(const std::string& bytes, const zenutl_test::ReadSteps& read) {
    {
      SCOPED_TRACE("std::istream");
      zenutl_test::ReadFromStream(bytes, read);
    }
    SCOPED_TRACE("CArchive");
    zenutl_test::ReadFromArchive(File("in.bin"), bytes, read);
  }
};

TEST_F(StreamReaderTest, EveryReadOneByteShortThrowsItsOwnMessage) {
  struct Case {
    const char* message;
    int bytes;  // one less than the read needs
    zenutl_test::ReadSteps read;
  };
  bool flags[2];
  char chars[2];
  unsigned char bytes[2];
  short shorts[2];
  unsigned short ushorts[2];
  int ints[2];
  std::uint32_t uints[2];
  long long longs[2];
  unsigned long long ulongs[2];
  float floats[2];
  double doubles[2];
  const Case cases[] = {
      {"ReadBool failed", 0, [](StreamReader& r) { r.ReadBool(); }},
      {"ReadChar failed", 0, [](StreamReader& r) { r.ReadChar(); }},
      {"ReadInt8 failed", 0, [](StreamReader& r) { r.ReadInt8(); }},
      {"ReadUInt8 failed", 0, [](StreamReader& r) { r.ReadUInt8(); }},
      {"ReadInt16 failed", 1, [](StreamReader& r) { r.ReadInt16(); }},
      {"ReadUInt16 failed", 1, [](StreamReader& r) { r.ReadUInt16(); }},
      {"ReadInt32 failed", 3, [](StreamReader& r) { r.ReadInt32(); }},
      {"ReadUInt32 failed", 3, [](StreamReader& r) { r.ReadUInt32(); }},
      {"ReadInt64 failed", 7, [](StreamReader& r) { r.ReadInt64(); }},
      {"ReadUInt64 failed", 7, [](StreamReader& r) { r.ReadUInt64(); }},
      {"ReadFloat failed", 3, [](StreamReader& r) { r.ReadFloat(); }},
      {"ReadDouble failed", 7, [](StreamReader& r) { r.ReadDouble(); }},
      {"ReadBoolVector failed", 1, [&](StreamReader& r) { r.ReadBoolVector(flags, 2); }},
      {"ReadCharVector failed", 1, [&](StreamReader& r) { r.ReadCharVector(chars, 2); }},
      {"ReadInt8Vector failed", 1, [&](StreamReader& r) { r.ReadInt8Vector(chars, 2); }},
      {"ReadUInt8Vector failed", 1, [&](StreamReader& r) { r.ReadUInt8Vector(bytes, 2); }},
      {"ReadInt16Vector failed", 3, [&](StreamReader& r) { r.ReadInt16Vector(shorts, 2); }},
      {"ReadUInt16Vector failed", 3, [&](StreamReader& r) { r.ReadUInt16Vector(ushorts, 2); }},
      {"ReadInt32Vector failed", 7, [&](StreamReader& r) { r.ReadInt32Vector(ints, 2); }},
      {"ReadUInt32Vector failed", 7, [&](StreamReader& r) { r.ReadUInt32Vector(uints, 2); }},
      {"ReadInt64Vector failed", 15, [&](StreamReader& r) { r.ReadInt64Vector(longs, 2); }},
      {"ReadUInt64Vector failed", 15, [&](StreamReader& r) { r.ReadUInt64Vector(ulongs, 2); }},
      {"ReadFloatVector failed", 7, [&](StreamReader& r) { r.ReadFloatVector(floats, 2); }},
      {"ReadDoubleVector failed", 15, [&](StreamReader& r) { r.ReadDoubleVector(doubles, 2); }},
      // A text fails on its length, or on its bytes; a vector of texts as its element did.
      {"ReadUInt32 failed", 3, [](StreamReader& r) { r.ReadString(); }},
      {"ReadString failed", 6, [](StreamReader& r) { r.ReadString(); }},
      {"ReadStdString failed", 6, [](StreamReader& r) { r.ReadStdString(); }},
      {"ReadString failed", 6,
       [](StreamReader& r) {
         CString texts[1];
         r.ReadStringVector(texts, 1);
       }},
      {"ReadStdString failed", 6,
       [](StreamReader& r) {
         std::string texts[1];
         r.ReadStdStringVector(texts, 1);
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    // Text cases announce three bytes and bring two.
    const std::string bytes = (Bytes({3, 0, 0, 0}) + "ab").substr(0, c.bytes);
    OnBoth(bytes,
           [&](StreamReader& r) { EXPECT_THROW_WHY(c.read(r), StreamException, c.message); });
  }
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
  struct Case {
    const char* message;
    std::string bytes;
    zenutl_test::ReadSteps read;
  };
  const Case cases[] = {
      {"ReadStdString failed", Bytes({0xFF, 0xFF, 0xFF, 0xFF}) + tail,
       [](StreamReader& r) { r.ReadStdString(); }},
      {"ReadString failed", Bytes({0xFF, 0xFF, 0xFF, 0x7F}) + tail,
       [](StreamReader& r) { r.ReadString(); }},
      // A CString cannot hold 2^31 bytes or more, so that length fails at once.
      {"ReadString failed", Bytes({0, 0, 0, 0x80}) + tail, [](StreamReader& r) { r.ReadString(); }},
  };
  for (const Case& c : cases) {
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

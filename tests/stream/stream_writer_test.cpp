#include "zenutl/stream_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "support/full_disk.h"
#include "zenutl/stream_reader.h"

namespace {

using zenutl_test::Bytes;

// A stream that takes exactly `room` bytes and refuses the rest.
class LimitedBuffer : public std::stringbuf {
 public:
  explicit LimitedBuffer(std::streamsize room) : mRoom(room) {}

 protected:
  std::streamsize xsputn(const char* data, std::streamsize size) override {
    const std::streamsize taken = std::min(size, mRoom);
    mRoom -= taken;
    return std::stringbuf::xsputn(data, taken);
  }

 private:
  std::streamsize mRoom;
};

class StreamWriterTest : public zenutl_test::TempDirTest {
 protected:
  // Expects `write` to give `bytes` on a stream and on an archive, and `read` to take them back
  // on both, ending where they end.
  void ExpectRoundTrip(const zenutl_test::WriteSteps& write, const std::string& bytes,
                       const zenutl_test::ReadSteps& read) {
    const zenutl_test::WriteSteps writeAll = [&](StreamWriter& w) {
      write(w);
      EXPECT_EQ(w.Tell(), static_cast<long long>(bytes.size()));
    };
    EXPECT_EQ(zenutl_test::WrittenToStream(writeAll), bytes);
    EXPECT_EQ(zenutl_test::WrittenToArchive(File("out.bin"), writeAll), bytes);
    zenutl_test::ReadFromBoth(File("in.bin"), bytes, [&](StreamReader& r) {
      read(r);
      EXPECT_EQ(r.Tell(), static_cast<long long>(bytes.size()));
    });
  }

  // The scalar and vector forms of one type: `values` one by one, then all as one vector, give
  // `bytes` twice and read back. Then each form fails with its own message: a read one byte
  // short of its data, a write to a failed stream.
  template <typename T>
  void ExpectForms(const std::string& name, void (StreamWriter::*write)(T),
                   T (StreamReader::*read)(),
                   void (StreamWriter::*writeVector)(const T*, unsigned int),
                   void (StreamReader::*readVector)(T*, unsigned int),
                   std::initializer_list<T> values, const std::string& bytes) {
    SCOPED_TRACE(name);
    const unsigned int count = static_cast<unsigned int>(values.size());
    std::unique_ptr<T[]> back(new T[count]);
    ExpectRoundTrip(
        [&](StreamWriter& w) {
          for (T value : values) (w.*write)(value);
          (w.*writeVector)(values.begin(), count);
          (w.*writeVector)(nullptr, 0);
        },
        bytes + bytes,
        [&](StreamReader& r) {
          for (T value : values) EXPECT_EQ((r.*read)(), value);
          (r.*readVector)(back.get(), count);
          (r.*readVector)(nullptr, 0);
          EXPECT_TRUE(std::equal(values.begin(), values.end(), back.get()));
        });

    const std::string short1 = bytes.substr(0, sizeof(T) - 1);
    const std::string short2 = bytes.substr(0, 2 * sizeof(T) - 1);
    const auto failsReading = [&](StreamReader& r) {
      EXPECT_THROW_WHY((r.*read)(), StreamException, "Read" + name + " failed");
    };
    const auto vectorFailsReading = [&](StreamReader& r) {
      EXPECT_THROW_WHY((r.*readVector)(back.get(), 2), StreamException,
                       "Read" + name + "Vector failed");
    };
    zenutl_test::ReadFromBoth(File("in.bin"), short1, failsReading);
    zenutl_test::ReadFromBoth(File("in.bin"), short2, vectorFailsReading);
    std::ostringstream failed;
    failed.setstate(std::ios::badbit);
    StreamWriter writer(failed);
    EXPECT_THROW_WHY((writer.*write)(*values.begin()), StreamException, "Write" + name + " failed");
    EXPECT_THROW_WHY((writer.*writeVector)(values.begin(), 1), StreamException,
                     "Write" + name + "Vector failed");
  }
};

#define FORMS(Name)                                             \
#Name, &StreamWriter::Write##Name, &StreamReader::Read##Name, \
      &StreamWriter::Write##Name##Vector, &StreamReader::Read##Name##Vector

TEST_F(StreamWriterTest, EveryNumberFormHasItsExactBytesAndItsOwnFailures) {
  ExpectForms<bool>(FORMS(Bool), {true, false}, Bytes({1, 0}));
  ExpectForms<char>(FORMS(Char), {'A', 'z'}, "Az");
  ExpectForms<char>(FORMS(Int8), {-2, 127}, Bytes({0xFE, 0x7F}));
  ExpectForms<unsigned char>(FORMS(UInt8), {200, 0}, Bytes({200, 0}));
  ExpectForms<short>(FORMS(Int16), {SHRT_MIN, -2}, Bytes({0, 0x80, 0xFE, 0xFF}));
  ExpectForms<unsigned short>(FORMS(UInt16), {0xABCD, 1}, Bytes({0xCD, 0xAB, 1, 0}));
  ExpectForms<int>(FORMS(Int32), {INT_MIN, -1}, Bytes({0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}));
  // Four bytes, whatever the width of the caller's unsigned long; above 2^31 stays positive.
  ExpectForms<std::uint32_t>(FORMS(UInt32), {0xFFFFFFFF, 0x80000000},
                             Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0x80}));
  ExpectForms<long long>(FORMS(Int64), {-2, LLONG_MIN},
                         Bytes({0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  //
                                0, 0, 0, 0, 0, 0, 0, 0x80}));
  ExpectForms<unsigned long long>(FORMS(UInt64), {0x0102030405060708ull, 0},
                                  Bytes({8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
  ExpectForms<float>(FORMS(Float), {1.0f, -2.5f}, Bytes({0, 0, 0x80, 0x3F, 0, 0, 0x20, 0xC0}));
  ExpectForms<double>(FORMS(Double), {1.0, -2.5},
                      Bytes({0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0x04, 0xC0}));
}

#undef FORMS

TEST_F(StreamWriterTest, TextsAreAThirtyTwoBitLengthAndTheirBytes) {
  const CString texts[] = {"ab", ""};
  const std::string standard[] = {std::string("a\0b", 3)};
  ExpectRoundTrip(
      [&](StreamWriter& w) {
        w.WriteStringVector(texts, 2);
        w.WriteStdStringVector(standard, 1);
      },
      Bytes({2, 0, 0, 0, 'a', 'b', 0, 0, 0, 0, 3, 0, 0, 0, 'a', 0, 'b'}),
      [&](StreamReader& r) {
        EXPECT_EQ(r.ReadString(), "ab");
        EXPECT_EQ(r.ReadString(), "");
        EXPECT_EQ(r.ReadStdString(), standard[0]);  // the zero byte is kept
      });
}

TEST_F(StreamWriterTest, ATextFailsAsItsLengthOrAsItsBytes) {
  // The length goes first, and its failure is the one reported.
  std::ostringstream failed;
  failed.setstate(std::ios::badbit);
  const CString texts[] = {"abc"};
  EXPECT_THROW_WHY(StreamWriter(failed).WriteStringVector(texts, 1), StreamException,
                   "WriteUInt32 failed");
  EXPECT_THROW_WHY(StreamWriter(failed).WriteStdString("x"), StreamException, "WriteUInt32 failed");
  const std::string standard[] = {"abc"};
  const std::pair<const char*, zenutl_test::WriteSteps> bytesFail[] = {
      {"WriteString failed", [](StreamWriter& w) { w.WriteString("abc"); }},
      {"WriteStdString failed", [&](StreamWriter& w) { w.WriteStdStringVector(standard, 1); }},
  };
  for (const auto& c : bytesFail) {
    SCOPED_TRACE(c.first);
    LimitedBuffer buffer(6);  // the length and two of the three bytes
    std::ostream stream(&buffer);
    StreamWriter writer(stream);
    EXPECT_THROW_WHY(c.second(writer), StreamException, c.first);
  }
}

TEST_F(StreamWriterTest, ArchiveFailuresPassThroughWritesButNotTellOrSeek) {
  const std::string path = File("full.bin");
  CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
  CArchive archive(&file, CArchive::store, 128);
  StreamWriter writer(archive);
  writer.WriteInt32(7);  // buffered: no failure yet
  zenutl::platform::ScopedFileCalls full(zenutl_test::FullDiskCalls());
  EXPECT_THROW_WHY(writer.Tell(), StreamException, "Tell failed.");
  const std::vector<double> many(100, 1.0);
  EXPECT_THROW(writer.WriteDoubleVector(many.data(), 100), CFileException);
  archive.Abort();
  EXPECT_THROW_WHY(writer.Seek(0), StreamException, "Seek failed.");
}

}  // namespace

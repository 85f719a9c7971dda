#include "zenutl/stream_writer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "support/full_disk.h"
#include "zenutl/stream_reader.h"

namespace {

using zenutl_test::Bytes;

class StreamWriterTest : public zenutl_test::TempDirTest {};

struct Encoding {
  const char* name;
  zenutl_test::WriteSteps write;
  std::string bytes;
  zenutl_test::ReadSteps readBack;  // checks the values
};

// Every scalar form, the widths' wrap points, and vector forms of each width.
std::vector<Encoding> Encodings() {
  return {
      {"Bool",
       [](StreamWriter& w) {
         w.WriteBool(true);
         w.WriteBool(false);
       },
       Bytes({1, 0}),
       [](StreamReader& r) {
         EXPECT_TRUE(r.ReadBool());
         EXPECT_FALSE(r.ReadBool());
       }},
      {"Char and Int8",
       [](StreamWriter& w) {
         w.WriteChar('A');
         w.WriteInt8(-2);
       },
       Bytes({0x41, 0xFE}),
       [](StreamReader& r) {
         EXPECT_EQ(r.ReadChar(), 'A');
         EXPECT_EQ(r.ReadInt8(), -2);
       }},
      {"UInt8", [](StreamWriter& w) { w.WriteUInt8(200); }, Bytes({200}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadUInt8(), 200); }},
      {"Int16",
       [](StreamWriter& w) {
         w.WriteInt16(SHRT_MIN);
         w.WriteInt16(-2);
       },
       Bytes({0, 0x80, 0xFE, 0xFF}),
       [](StreamReader& r) {
         EXPECT_EQ(r.ReadInt16(), SHRT_MIN);
         EXPECT_EQ(r.ReadInt16(), -2);
       }},
      {"UInt16", [](StreamWriter& w) { w.WriteUInt16(0xABCD); }, Bytes({0xCD, 0xAB}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadUInt16(), 0xABCD); }},
      {"Int32",
       [](StreamWriter& w) {
         w.WriteInt32(INT_MIN);
         w.WriteInt32(-1);
       },
       Bytes({0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}),
       [](StreamReader& r) {
         EXPECT_EQ(r.ReadInt32(), INT_MIN);
         EXPECT_EQ(r.ReadInt32(), -1);
       }},
      // Four bytes whatever the width of the caller's unsigned long; above 2^31 stays positive.
      {"UInt32",
       [](StreamWriter& w) {
         w.WriteUInt32(0xFFFFFFFFul);
         w.WriteUInt32(0x80000000ul);
       },
       Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0x80}),
       [](StreamReader& r) {
         EXPECT_EQ(r.ReadUInt32(), 4294967295ull);
         EXPECT_EQ(r.ReadUInt32(), 2147483648ull);
       }},
      {"Int64", [](StreamWriter& w) { w.WriteInt64(-2); },
       Bytes({0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadInt64(), -2); }},
      {"UInt64", [](StreamWriter& w) { w.WriteUInt64(0x0102030405060708ull); },
       Bytes({8, 7, 6, 5, 4, 3, 2, 1}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadUInt64(), 0x0102030405060708ull); }},
      {"Float", [](StreamWriter& w) { w.WriteFloat(1.0f); }, Bytes({0, 0, 0x80, 0x3F}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadFloat(), 1.0f); }},
      {"Double", [](StreamWriter& w) { w.WriteDouble(-2.5); },
       Bytes({0, 0, 0, 0, 0, 0, 0x04, 0xC0}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadDouble(), -2.5); }},
      {"String",
       [](StreamWriter& w) {
         w.WriteString("ab");
         w.WriteString("");
       },
       Bytes({2, 0, 0, 0, 'a', 'b', 0, 0, 0, 0}),
       [](StreamReader& r) {
         EXPECT_EQ(r.ReadString(), "ab");
         EXPECT_EQ(r.ReadString(), "");
       }},
      {"StdString with a zero byte",
       [](StreamWriter& w) { w.WriteStdString(std::string("a\0b", 3)); },
       Bytes({3, 0, 0, 0, 'a', 0, 'b'}),
       [](StreamReader& r) { EXPECT_EQ(r.ReadStdString(), std::string("a\0b", 3)); }},
      {"BoolVector and CharVector",
       [](StreamWriter& w) {
         const bool flags[] = {true, false};
         w.WriteBoolVector(flags, 2);
         w.WriteCharVector("xy", 2);
       },
       Bytes({1, 0, 'x', 'y'}),
       [](StreamReader& r) {
         bool flags[2];
         char text[2];
         r.ReadBoolVector(flags, 2);
         r.ReadCharVector(text, 2);
         EXPECT_TRUE(flags[0] && !flags[1] && text[0] == 'x' && text[1] == 'y');
       }},
      {"Int16Vector",
       [](StreamWriter& w) {
         const short values[] = {1, -1};
         w.WriteInt16Vector(values, 2);
       },
       Bytes({1, 0, 0xFF, 0xFF}),
       [](StreamReader& r) {
         short values[2];
         r.ReadInt16Vector(values, 2);
         EXPECT_TRUE(values[0] == 1 && values[1] == -1);
       }},
      {"UInt32Vector",
       [](StreamWriter& w) {
         const std::uint32_t values[] = {1, 0xFFFFFFFF};
         w.WriteUInt32Vector(values, 2);
       },
       Bytes({1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}),
       [](StreamReader& r) {
         std::uint32_t values[2];
         r.ReadUInt32Vector(values, 2);
         EXPECT_TRUE(values[0] == 1 && values[1] == 0xFFFFFFFF);
       }},
      {"DoubleVector and an empty one",
       [](StreamWriter& w) {
         const double values[] = {1.0, -2.5};
         w.WriteDoubleVector(values, 2);
         w.WriteFloatVector(nullptr, 0);
       },
       Bytes({0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0x04, 0xC0}),
       [](StreamReader& r) {
         double values[2];
         r.ReadDoubleVector(values, 2);
         r.ReadFloatVector(nullptr, 0);
         EXPECT_TRUE(values[0] == 1.0 && values[1] == -2.5);
       }},
      {"StringVector and StdStringVector",
       [](StreamWriter& w) {
         const CString texts[] = {"a", ""};
         const std::string standard[] = {"bc"};
         w.WriteStringVector(texts, 2);
         w.WriteStdStringVector(standard, 1);
       },
       Bytes({1, 0, 0, 0, 'a', 0, 0, 0, 0, 2, 0, 0, 0, 'b', 'c'}),
       [](StreamReader& r) {
         CString texts[2];
         std::string standard[1];
         r.ReadStringVector(texts, 2);
         r.ReadStdStringVector(standard, 1);
         EXPECT_TRUE(texts[0] == "a" && texts[1] == "" && standard[0] == "bc");
       }},
  };
}

TEST_F(StreamWriterTest, EveryFormHasItsExactBytesOnStreamsAndArchivesAndReadsBack) {
  for (const Encoding& e : Encodings()) {
    SCOPED_TRACE(e.name);
    const zenutl_test::WriteSteps writeAll = [&](StreamWriter& w) {
      e.write(w);
      EXPECT_EQ(w.Tell(), static_cast<long long>(e.bytes.size()));
    };
    EXPECT_EQ(zenutl_test::WrittenToStream(writeAll), e.bytes);
    EXPECT_EQ(zenutl_test::WrittenToArchive(File("out.bin"), writeAll), e.bytes);
    const zenutl_test::ReadSteps readAll = [&](StreamReader& r) {
      e.readBack(r);
      EXPECT_EQ(r.Tell(), static_cast<long long>(e.bytes.size()));
    };
    zenutl_test::ReadFromStream(e.bytes, readAll);
    zenutl_test::ReadFromArchive(File("in.bin"), e.bytes, readAll);
  }
}

TEST_F(StreamWriterTest, EveryWriteOnAFailedStreamThrowsItsOwnMessage) {
  const CString texts[] = {"x"};
  const std::string standard[] = {"x"};
  const bool flags[] = {true};
  const char chars[] = {'x'};
  const unsigned char bytes[] = {1};
  const short shorts[] = {1};
  const unsigned short ushorts[] = {1};
  const int ints[] = {1};
  const std::uint32_t uints[] = {1};
  const long long longs[] = {1};
  const unsigned long long ulongs[] = {1};
  const float floats[] = {1};
  const double doubles[] = {1};
  const std::pair<const char*, zenutl_test::WriteSteps> cases[] = {
      {"WriteBool failed", [](StreamWriter& w) { w.WriteBool(true); }},
      {"WriteChar failed", [](StreamWriter& w) { w.WriteChar('x'); }},
      {"WriteInt8 failed", [](StreamWriter& w) { w.WriteInt8(1); }},
      {"WriteUInt8 failed", [](StreamWriter& w) { w.WriteUInt8(1); }},
      {"WriteInt16 failed", [](StreamWriter& w) { w.WriteInt16(1); }},
      {"WriteUInt16 failed", [](StreamWriter& w) { w.WriteUInt16(1); }},
      {"WriteInt32 failed", [](StreamWriter& w) { w.WriteInt32(1); }},
      {"WriteUInt32 failed", [](StreamWriter& w) { w.WriteUInt32(1); }},
      {"WriteInt64 failed", [](StreamWriter& w) { w.WriteInt64(1); }},
      {"WriteUInt64 failed", [](StreamWriter& w) { w.WriteUInt64(1); }},
      {"WriteFloat failed", [](StreamWriter& w) { w.WriteFloat(1); }},
      {"WriteDouble failed", [](StreamWriter& w) { w.WriteDouble(1); }},
      {"WriteBoolVector failed", [&](StreamWriter& w) { w.WriteBoolVector(flags, 1); }},
      {"WriteCharVector failed", [&](StreamWriter& w) { w.WriteCharVector(chars, 1); }},
      {"WriteInt8Vector failed", [&](StreamWriter& w) { w.WriteInt8Vector(chars, 1); }},
      {"WriteUInt8Vector failed", [&](StreamWriter& w) { w.WriteUInt8Vector(bytes, 1); }},
      {"WriteInt16Vector failed", [&](StreamWriter& w) { w.WriteInt16Vector(shorts, 1); }},
      {"WriteUInt16Vector failed", [&](StreamWriter& w) { w.WriteUInt16Vector(ushorts, 1); }},
      {"WriteInt32Vector failed", [&](StreamWriter& w) { w.WriteInt32Vector(ints, 1); }},
      {"WriteUInt32Vector failed", [&](StreamWriter& w) { w.WriteUInt32Vector(uints, 1); }},
      {"WriteInt64Vector failed", [&](StreamWriter& w) { w.WriteInt64Vector(longs, 1); }},
      {"WriteUInt64Vector failed", [&](StreamWriter& w) { w.WriteUInt64Vector(ulongs, 1); }},
      {"WriteFloatVector failed", [&](StreamWriter& w) { w.WriteFloatVector(floats, 1); }},
      {"WriteDoubleVector failed", [&](StreamWriter& w) { w.WriteDoubleVector(doubles, 1); }},
      // A text's length goes first, and its failure is the one reported.
      {"WriteUInt32 failed", [](StreamWriter& w) { w.WriteString("x"); }},
      {"WriteUInt32 failed", [](StreamWriter& w) { w.WriteStdString("x"); }},
      {"WriteUInt32 failed", [&](StreamWriter& w) { w.WriteStringVector(texts, 1); }},
      {"WriteUInt32 failed", [&](StreamWriter& w) { w.WriteStdStringVector(standard, 1); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.first);
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    StreamWriter writer(stream);
    EXPECT_THROW_WHY(c.second(writer), StreamException, c.first);
  }
}

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

TEST_F(StreamWriterTest, ATextWhoseBytesDoNotFitFailsAsTheTextNotTheLength) {
  const std::pair<const char*, zenutl_test::WriteSteps> cases[] = {
      {"WriteString failed", [](StreamWriter& w) { w.WriteString("abc"); }},
      {"WriteStdString failed", [](StreamWriter& w) { w.WriteStdString("abc"); }},
  };
  for (const auto& c : cases) {
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

#include "zenutl/stream_reader_proxy.h"

#include <gtest/gtest.h>

#include <string>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "zenutl/stream_directory_writer.h"

namespace {

// A directory of two streams, of which only stream 0 was written: a 32-bit value, a double
// and a text.
std::string Sample() {
  return zenutl_test::WrittenToStream([](StreamWriter& writer) {
    StreamDirectoryWriter directory(writer, 2, StreamHelperDirectory::e8Bit);
    StreamWriter& stream = directory.GetStream(0);
    stream.WriteUInt32(0xFFFFFFFF);
    stream.WriteDouble(2.5);
    stream.WriteString("text");
  });
}

TEST(StreamReaderProxy, APresentStreamIsReadAndTheDefaultsIgnored) {
  zenutl_test::ReadFromStream(Sample(), [](StreamReader& reader) {
    StreamDirectoryReader directory(reader);
    StreamReaderProxy proxy(directory, 0);
    EXPECT_EQ(proxy.GetStream(), &reader);
    EXPECT_EQ(proxy.ReadUInt32(7), 0xFFFFFFFFu);
    EXPECT_EQ(proxy.ReadDouble(7.0), 2.5);
    EXPECT_EQ(proxy.ReadString("default"), "text");
    EXPECT_THROW_WHY(proxy.ReadInt16(7), StreamException, "ReadInt16 failed");
  });
}

TEST(StreamReaderProxy, AnAbsentStreamAnswersEachDefaultAndReadsNothing) {
  zenutl_test::ReadFromStream(Sample(), [](StreamReader& reader) {
    StreamDirectoryReader directory(reader);
    for (unsigned int absent : {1u, 2u, 200u}) {
      SCOPED_TRACE(absent);
      StreamReaderProxy proxy;
      proxy = StreamReaderProxy(directory, absent);
      EXPECT_EQ(proxy.GetStream(), nullptr);
      const long long before = reader.Tell();
      EXPECT_EQ(proxy.ReadBool(true), true);
      EXPECT_EQ(proxy.ReadChar('c'), 'c');
      EXPECT_EQ(proxy.ReadInt8(-8), -8);
      EXPECT_EQ(proxy.ReadUInt8(200), 200);
      EXPECT_EQ(proxy.ReadInt16(-16), -16);
      EXPECT_EQ(proxy.ReadUInt16(65535), 65535);
      EXPECT_EQ(proxy.ReadInt32(-32), -32);
      EXPECT_EQ(proxy.ReadUInt32(0xFFFFFFFF), 0xFFFFFFFFu);
      EXPECT_EQ(proxy.ReadInt64(-64), -64);
      EXPECT_EQ(proxy.ReadUInt64(~0ull), ~0ull);
      EXPECT_EQ(proxy.ReadFloat(1.5f), 1.5f);
      EXPECT_EQ(proxy.ReadDouble(-2.5), -2.5);
      EXPECT_EQ(proxy.ReadString("cs"), "cs");
      EXPECT_EQ(proxy.ReadStdString("std"), "std");
      EXPECT_EQ(reader.Tell(), before);
    }
  });
}

}  // namespace

#include "zenutl/stream_directory_reader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "zenutl/stream_directory_writer.h"

namespace {

using zenutl_test::Bytes;
typedef StreamHelperDirectory Directory;

class StreamDirectoryReaderTest : public zenutl_test::TempDirTest {};

// "pre", then a directory of three streams: 0 holds "c", 1 was never begun, 2 holds "ab" (and
// was written first), then "post".
const std::string kSample = "pre" + Bytes({0, 3, 3, 0, 1, 4}) + "abc" + "post";

// A string buffer that counts the absolute seeks made on it; asking for the position is free.
class SeekCountingBuffer : public std::stringbuf {
 public:
  explicit SeekCountingBuffer(const std::string& bytes) : std::stringbuf(bytes) {}
  int seeks = 0;

 protected:
  pos_type seekpos(pos_type position, std::ios::openmode which) override {
    ++seeks;
    return std::stringbuf::seekpos(position, which);
  }
};

TEST_F(StreamDirectoryReaderTest, FindsStreamsInAnyOrderAndAnswersAbsentForTheRest) {
  const zenutl_test::ReadSteps read = [](StreamReader& reader) {
    reader.Seek(3);
    {
      StreamDirectoryReader directory(reader);
      EXPECT_EQ(directory.GetStream(0).ReadChar(), 'c');
      EXPECT_EQ(directory.GetStream(2, std::nothrow), &reader);
      EXPECT_EQ(reader.ReadChar(), 'a');
      for (unsigned int absent : {1u, 3u, 254u, 4000000000u}) {
        SCOPED_TRACE(absent);
        EXPECT_EQ(directory.GetStream(absent, std::nothrow), nullptr);
        EXPECT_THROW_WHY(directory.GetStream(absent), StreamException, "Invalid stream.");
      }
    }
    EXPECT_EQ(reader.ReadChar(), 'p');  // behind the container
  };
  zenutl_test::ReadFromBoth(File("in.bin"), kSample, read);
}

// Sizes come from the starts alone: each stream reaches to the next start in the payload.
TEST_F(StreamDirectoryReaderTest, ExtentsReachToTheNextStartOrTheEnd) {
  std::istringstream stream(kSample + Bytes({0, 3, 1, 0, 1, 3}) + "xy" + "z");
  StreamReader reader(stream);
  reader.Seek(3);
  struct Row {
    unsigned int index;
    bool present;
    long long position;
    unsigned long long size;
  };
  {
    StreamDirectoryReader directory(reader);
    EXPECT_EQ(directory.GetStreamCount(), 3u);
    EXPECT_EQ(directory.GetEndPosition(), 12);
    const Row rows[] = {{0, true, 11, 1}, {1, false, 0, 0}, {2, true, 9, 2}, {3, false, 0, 0}};
    for (const Row& row : rows) {
      SCOPED_TRACE(row.index);
      StreamDirectoryReader::Extent extent{-1, 0};
      EXPECT_EQ(directory.GetStreamExtent(row.index, extent), row.present);
      if (row.present) {
        EXPECT_EQ(extent.position, row.position);
        EXPECT_EQ(extent.size, row.size);
      }
    }
    EXPECT_EQ(reader.Tell(), 9);  // nothing moved
  }
  // Streams 0 and 2 begin at the same place: the container can't tell which one is empty.
  reader.Seek(16);
  StreamDirectoryReader shared(reader);
  StreamDirectoryReader::Extent first{}, third{};
  ASSERT_TRUE(shared.GetStreamExtent(0, first));
  ASSERT_TRUE(shared.GetStreamExtent(2, third));
  EXPECT_EQ(first.size, 2u);
  EXPECT_EQ(third.size, 2u);
  EXPECT_EQ(shared.GetEndPosition(), 24);
}

TEST_F(StreamDirectoryReaderTest, ReadingInWrittenOrderSeeksNever) {
  SeekCountingBuffer buffer(kSample.substr(3));
  std::istream stream(&buffer);
  StreamReader reader(stream);
  {
    StreamDirectoryReader directory(reader);
    EXPECT_EQ(directory.GetStream(2).ReadInt16(), 'a' | 'b' << 8);
    EXPECT_EQ(directory.GetStream(0).ReadChar(), 'c');
  }
  EXPECT_EQ(buffer.seeks, 0);
  {
    stream.seekg(0);
    buffer.seeks = 0;
    StreamDirectoryReader directory(reader);  // reads nothing, yet ends behind the container
  }
  EXPECT_EQ(buffer.seeks, 1);
  EXPECT_EQ(reader.ReadChar(), 'p');
}

TEST_F(StreamDirectoryReaderTest, DamageFailsWithItsOwnMessageAndNeverLeavesTheData) {
  struct Case {
    const char* name;
    std::string bytes;
    const char* failure;
  };
  const Case cases[] = {
      {"empty", "", "ReadUInt8 failed"},
      {"size code 4", Bytes({4, 0, 1}), "Invalid offset size."},
      {"size code 255", Bytes({255, 0, 1}), "Invalid offset size."},
      {"offsets cut short", Bytes({1, 2, 1, 0, 1}), "ReadUInt16 failed"},
      {"end offset 0", Bytes({0, 0, 0}), "Invalid end offset."},
      {"end offset negative", Bytes({3, 0, 1, 0, 0, 0, 0, 0, 0, 0x80}), "Invalid end offset."},
      {"stream beyond the end", Bytes({0, 1, 9, 2, 'x'}), "Invalid stream."},
      {"stream beyond the data", Bytes({0, 1, 200, 250, 'x'}), "Seek failed."},
      {"positions beyond 2^63",
       Bytes({3, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
              0xFF, 0xFF, 0x7F}),
       "Seek failed."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    // Damage is no absence: the nothrow form throws too. The destructor cannot reach the end
    // either, and says nothing.
    zenutl_test::ReadFromStream(c.bytes, [&](StreamReader& reader) {
      EXPECT_THROW_WHY(StreamDirectoryReader(reader).GetStream(0), StreamException, c.failure);
    });
    zenutl_test::ReadFromStream(c.bytes, [&](StreamReader& reader) {
      EXPECT_THROW_WHY(StreamDirectoryReader(reader).GetStream(0, std::nothrow), StreamException,
                       c.failure);
    });
  }
}

}  // namespace

#include "zenutl/stream_directory_writer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"
#include "zenutl/stream_directory_reader.h"

namespace {

using zenutl_test::Bytes;
typedef StreamHelperDirectory Directory;

class StreamDirectoryWriterTest : public zenutl_test::TempDirTest {};

// A prefix, then three streams begun in the order 2, 0 with "ab" and "c"; stream 1 is never
// begun.
void WriteSample(StreamWriter& writer, Directory::OffsetSize size) {
  writer.WriteCharVector("pre", 3);
  {
    StreamDirectoryWriter directory(writer, 3, size);
    directory.GetStream(2).WriteCharVector("ab", 2);
    directory.GetStream(0).WriteChar('c');
  }
}

TEST_F(StreamDirectoryWriterTest, WritesTheContainerByteForByteInEveryWidth) {
  const struct {
    Directory::OffsetSize size;
    std::string header;  // code, count, offsets of streams 0, 1, 2, end offset
  } cases[] = {
      {Directory::e8Bit, Bytes({0, 3, 3, 0, 1, 4})},
      {Directory::e16Bit, Bytes({1, 3, 3, 0, 0, 0, 1, 0, 4, 0})},
      {Directory::e32Bit, Bytes({2, 3, 3, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 4, 0, 0, 0})},
      {Directory::e64Bit, Bytes({3, 3, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                 0, 1, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    const std::string expected = "pre" + c.header + "abc";
    const zenutl_test::WriteSteps write = [&](StreamWriter& writer) {
      WriteSample(writer, c.size);
      EXPECT_EQ(writer.Tell(), static_cast<long long>(expected.size()));
    };
    EXPECT_EQ(zenutl_test::WrittenToStream(write), expected);
    EXPECT_EQ(zenutl_test::WrittenToArchive(File("out.bin"), write), expected);
  }
}

TEST_F(StreamDirectoryWriterTest, AnEmptyDirectoryHoldsTheCodeAZeroCountAndEndOffsetOne) {
  EXPECT_EQ(zenutl_test::WrittenToStream([](StreamWriter& writer) {
              StreamDirectoryWriter directory(writer, 0, Directory::e16Bit);
            }),
            Bytes({1, 0, 1, 0}));
}

TEST_F(StreamDirectoryWriterTest, RefusesBadArgumentsAndAStreamBegunTwice) {
  std::ostringstream stream;
  StreamWriter writer(stream);
  EXPECT_THROW_WHY(StreamDirectoryWriter(writer, 255, Directory::e8Bit), StreamException,
                   "Invalid stream count.");
  EXPECT_THROW_WHY(StreamDirectoryWriter(writer, 1, static_cast<Directory::OffsetSize>(4)),
                   StreamException, "Invalid offset size.");
  EXPECT_EQ(stream.str(), "");  // refused before anything was written
  StreamDirectoryWriter directory(writer, 254, Directory::e8Bit);
  directory.GetStream(253);
  EXPECT_THROW_WHY(directory.GetStream(253), StreamException, "Invalid stream.");
  EXPECT_THROW_WHY(directory.GetStream(254), StreamException, "Invalid stream.");
}

// Writes `payload` bytes into stream 0 of a directory with the given width and lets it go.
void WritePayload(StreamWriter& writer, Directory::OffsetSize size, std::size_t payload) {
  StreamDirectoryWriter directory(writer, 1, size);
  const std::string bytes(payload, 'p');
  directory.GetStream(0).WriteCharVector(bytes.data(), static_cast<unsigned int>(payload));
}

TEST_F(StreamDirectoryWriterTest, TheDestructorThrowsWhenTheEndOffsetOutgrowsItsWidth) {
  const struct {
    Directory::OffsetSize size;
    std::size_t largest;  // payload whose end offset still fits
    const char* failure;
  } cases[] = {{Directory::e8Bit, 254, "Write8BitOffset failed."},
               {Directory::e16Bit, 65534, "Write16BitOffset failed."}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.failure);
    std::ostringstream fits;
    StreamWriter fitsWriter(fits);
    EXPECT_NO_THROW(WritePayload(fitsWriter, c.size, c.largest));
    std::ostringstream tooLarge;
    StreamWriter tooLargeWriter(tooLarge);
    EXPECT_THROW_WHY(WritePayload(tooLargeWriter, c.size, c.largest + 1), StreamException,
                     c.failure);
  }
}

TEST_F(StreamDirectoryWriterTest, TheThirtyTwoBitWidthEndsAtFourGigabytesAndReadsBackBeyond) {
  // A sparse file: the end of the payload is reached by seeking, not by writing 4 GB.
  const auto writePayload = [&](long long payload) {
    std::ofstream file(File("sparse.bin"), std::ios::binary | std::ios::trunc);
    StreamWriter writer(file);
    StreamDirectoryWriter directory(writer, 1, Directory::e32Bit);
    directory.GetStream(0).WriteChar('s');
    writer.Seek(writer.Tell() + payload - 2);
    writer.WriteChar('z');  // the end offset is now payload + 1
  };
  EXPECT_THROW_WHY(writePayload(0xFFFFFFFFLL), StreamException, "Write32BitOffset failed.");
  writePayload(0xFFFFFFFELL);
  std::ifstream file(File("sparse.bin"), std::ios::binary);
  StreamReader reader(file);
  {
    StreamDirectoryReader directory(reader);
    EXPECT_EQ(directory.GetStream(0).ReadChar(), 's');
  }
  EXPECT_EQ(reader.Tell(), 10 + 0xFFFFFFFELL);  // behind the container
}

TEST_F(StreamDirectoryWriterTest, WhileAnotherExceptionUnwindsTheDestructorStaysQuiet) {
  std::ostringstream stream;
  StreamWriter writer(stream);
  EXPECT_THROW(
      {
        StreamDirectoryWriter directory(writer, 1, Directory::e8Bit);
        directory.GetStream(0).WriteCharVector(std::string(300, 'x').data(), 300);
        throw std::runtime_error("the caller's own failure");
      },
      std::runtime_error);
}

}  // namespace

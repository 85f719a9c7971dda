#include "zenutl/stream_byte_helpers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "stream/stream_test_support.h"

namespace {

using zenutl_test::Bytes;

TEST(StreamByteHelpers, MoveItemsOfEachWidthAsTheyLieAndBack) {
  const unsigned char data[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const struct {
    const char* name;
    bool (*write)(const void*, int, std::ostream&);
    bool (*read)(void*, int, std::istream&);
    int width;
  } cases[] = {{"Bytes", &WriteBytes, &ReadBytes, 1},
               {"TwoBytes", &WriteTwoBytes, &ReadTwoBytes, 2},
               {"FourBytes", &WriteFourBytes, &ReadFourBytes, 4},
               {"EightBytes", &WriteEightBytes, &ReadEightBytes, 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::stringstream stream;
    EXPECT_TRUE(c.write(data, 2, stream));
    EXPECT_TRUE(c.write(data, 0, stream));
    ASSERT_EQ(stream.str(), std::string(reinterpret_cast<const char*>(data), 2 * c.width));
    unsigned char back[16] = {};
    EXPECT_TRUE(c.read(back, 2, stream));
    EXPECT_EQ(std::memcmp(back, data, 2 * c.width), 0);
    EXPECT_TRUE(c.read(back, 0, stream));
  }
  std::stringstream stream;
  EXPECT_TRUE(WriteArray(data, 3, 5, stream));
  EXPECT_EQ(stream.str().size(), 15u);
  unsigned char back[15] = {};
  EXPECT_TRUE(ReadArray(back, 5, 3, stream));
  EXPECT_EQ(std::memcmp(back, data, 15), 0);
}

TEST(StreamByteHelpers, AnEndOfStreamOrANegativeCountIsAFailureLeftInTheState) {
  std::istringstream seven(std::string(7, 'x'));
  double value = 0;
  EXPECT_FALSE(ReadEightBytes(&value, 1, seven));
  EXPECT_TRUE(seven.eof() && seven.fail());

  std::istringstream exact("abcd");
  char four[4];
  EXPECT_TRUE(ReadBytes(four, 4, exact));
  EXPECT_FALSE(ReadBytes(four, 0, exact.ignore()));  // eof alone is a failure too

  std::stringstream stream("abcd");
  EXPECT_FALSE(ReadArray(four, 2, -1, stream));
  EXPECT_TRUE(stream.fail());
  stream.clear();
  EXPECT_FALSE(WriteTwoBytes(four, -3, stream));
  EXPECT_EQ(stream.str(), "abcd");
}

TEST(StreamByteHelpers, WriteBinaryStringCutsTheLengthToSixteenBits) {
  const std::string longText(70000, 'q');
  const std::pair<const char*, std::string> cases[] = {
      {nullptr, Bytes({0, 0})},
      {"abc", Bytes({3, 0}) + "abc"},
      {longText.c_str(), Bytes({0x70, 0x11}) + std::string(4464, 'q')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.second.size());
    std::ostringstream stream;
    EXPECT_TRUE(WriteBinaryString(c.first, stream));
    EXPECT_EQ(stream.str(), c.second);
  }
}

TEST(StreamByteHelpers, EachBinaryStringReaderReadsTheFormatItsWay) {
  const std::string bytes = Bytes({5, 0}) + std::string("ab\0cd", 5) + Bytes({0, 0});
  std::istringstream stream(bytes);
  char* buffer = new char[3];
  ASSERT_TRUE(ReadBinaryString(&buffer, stream));
  EXPECT_EQ(std::string(buffer, 6), std::string("ab\0cd\0", 6));
  ASSERT_TRUE(ReadBinaryString(&buffer, stream));
  EXPECT_STREQ(buffer, "");
  delete[] buffer;

  const struct {
    const char* name;
    std::string text;
    std::string asCString;  // ends at the first zero byte
  } cases[] = {{"empty", "", ""}, {"embedded zero", std::string("ab\0cd", 5), "ab"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string image =
        Bytes({static_cast<int>(c.text.size() & 0xFF), static_cast<int>(c.text.size() >> 8)}) +
        c.text;
    CString cstring("previous text, longer than some");
    std::istringstream forCString(image);
    EXPECT_TRUE(ReadBinaryString(cstring, forCString));
    EXPECT_EQ(cstring.str(), c.asCString);
    std::string standard("previous");
    std::istringstream forStandard(image);
    EXPECT_TRUE(ReadBinaryString(standard, forStandard));
    EXPECT_EQ(standard, c.text);
  }
}

TEST(StreamByteHelpers, AReusableBufferIsReplacedOnlyWhenTheTextDoesNotFit) {
  std::istringstream stream(Bytes({9, 0}) + "123456789" + Bytes({10, 0}) + "0123456789");
  char* buffer = new char[10];
  char* const original = buffer;
  int capacity = 10;
  ASSERT_TRUE(ReadBinaryString(&buffer, &capacity, stream));
  EXPECT_EQ(buffer, original);
  EXPECT_EQ(capacity, 10);
  EXPECT_STREQ(buffer, "123456789");
  ASSERT_TRUE(ReadBinaryString(&buffer, &capacity, stream));
  EXPECT_EQ(capacity, 11);
  EXPECT_STREQ(buffer, "0123456789");
  delete[] buffer;
}

TEST(StreamByteHelpers, TruncatedBinaryStringsAnswerFalseAndLeaveTheirTargetsAsDocumented) {
  const std::string cut = Bytes({6, 0}) + "abc";  // three of six bytes
  char* buffer = nullptr;
  std::istringstream forBuffer(cut);
  EXPECT_FALSE(ReadBinaryString(&buffer, forBuffer));
  EXPECT_EQ(std::string(buffer, 7), std::string("abc\0\0\0\0", 7));
  delete[] buffer;
  std::string standard;
  std::istringstream forStandard(cut);
  EXPECT_FALSE(ReadBinaryString(standard, forStandard));
  EXPECT_EQ(standard, "abcccc");

  buffer = new char[4];
  int capacity = 4;
  CString cstring("kept");
  standard = "emptied";
  std::istringstream noLength(Bytes({1}));
  EXPECT_FALSE(ReadBinaryString(&buffer, &capacity, noLength));
  EXPECT_EQ(capacity, 4);
  EXPECT_FALSE(ReadBinaryString(cstring, noLength));
  EXPECT_EQ(cstring, "kept");
  EXPECT_FALSE(ReadBinaryString(standard, noLength));
  EXPECT_EQ(standard, "");
  EXPECT_FALSE(ReadBinaryString(&buffer, noLength));
  EXPECT_EQ(buffer, nullptr);
}

}  // namespace

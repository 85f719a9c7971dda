// Base64 against RFC 4648's vectors and OpenSSL, the line wrapping counter, and every way the
// decoder refuses or oddly accepts text.
#include "zenutl/base64.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include "digest/openssl_oracle.h"

namespace {

const unsigned int kNoWrap = 0xFFFFFFFF;

TEST(Base64, EncodesAndDecodesRfc4648Vectors) {
  const struct {
    const char* data;
    const char* text;
  } rows[] = {{"", ""},
              {"f", "Zg=="},
              {"fo", "Zm8="},
              {"foo", "Zm9v"},
              {"foob", "Zm9vYg=="},
              {"fooba", "Zm9vYmE="},
              {"foobar", "Zm9vYmFy"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.data);
    EXPECT_EQ(row.text, Base64::Encode(row.data, kNoWrap, "\n"));
    EXPECT_EQ(row.data, Base64::Decode(row.text));
  }
}

TEST(Base64, BreaksLinesAfterEveryLineLengthCharactersPadsIncluded) {
  const struct {
    const char* data;
    unsigned int lineLength;
    const char* lineBreak;
    const char* text;
  } rows[] = {
      {"abcdef", 4, "\n", "YWJj\nZGVm\n"},  // a break ends a text of whole lines
      {"abcd", 3, "\r\n", "YWJ\r\njZA\r\n=="},
      {"abcd", 8, "\n", "YWJjZA==\n"},  // the last pad counts
      {"a", 1, "|", "Y|Q|=|=|"},
      {"a", 0, "|", "Y|Q|=|=|"},
      {"abcdef", 5, "", "YWJjZGVm"},
      {"", 1, "\n", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.text, Base64::Encode(row.data, row.lineLength, row.lineBreak));
  }
  EXPECT_EQ("abcdef", Base64::Decode(" YWJj\r\n\tZGVm\n"));
}

TEST(Base64, DecodeRefusesBadGroupsButEndsQuietlyOnPadsAndTakesZeroAs65) {
  const char* const kRefused = "refused";
  const struct {
    std::string text;
    std::string data;
  } rows[] = {
      {"Zm9v!", kRefused},
      {"Zm\x80v", kRefused},
      {"Zg===", kRefused},   // a third pad
      {"Zg= =v", kRefused},  // data after a pad
      {"Zg=", kRefused},     // pads and data don't make four
      {"Zm9vY", kRefused},
      {"Zm9v = = \n", "foo"},  // a group of pads alone ends the text
      {" \t\n", ""},
      {std::string("\0AAA", 4), std::string("\x04\0\0", 3)},
      {std::string("A\0AA", 4), std::string("\0\x10\0", 3)},
      {std::string("AAD\0", 4), std::string("\0\0\x01", 3)},  // the sum runs past the byte
      {std::string("QU\0=", 4), std::string("\x41\x40", 2)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    try {
      EXPECT_EQ(row.data, Base64::Decode(row.text));
    } catch (const std::runtime_error& e) {
      EXPECT_EQ(kRefused, row.data);
      EXPECT_STREQ("Base64::Decode - Internal error", e.what());
    }
  }
}

TEST(Base64, AgreesWithOpenSslOnRandomData) {
  std::mt19937 random(4648);
  for (int round = 0; round < 400; ++round) {
    const std::size_t length = round < 100 ? round : random() % 10000;
    const std::string data = zenutl_test::RandomBytes(random, length);
    const std::string plain = zenutl_test::OpenSslBase64(data);
    ASSERT_EQ(plain, Base64::Encode(data, kNoWrap, "")) << length;
    ASSERT_EQ(data, Base64::Decode(plain));

    // OpenSSL ends every line with a break, the last one too; here a short last line has none.
    std::string wrapped = Base64::Encode(data, 64, "\n");
    if (!wrapped.empty() && wrapped.back() != '\n') wrapped += '\n';
    const std::string openSslWrapped = zenutl_test::OpenSslWrappedBase64(data);
    ASSERT_EQ(openSslWrapped, wrapped) << length;
    ASSERT_EQ(data, Base64::Decode(openSslWrapped));
    const unsigned int odd = 1 + random() % 90;
    ASSERT_EQ(data, Base64::Decode(Base64::Encode(data, odd, "\r\n"))) << odd;
  }
}

}  // namespace

// Blowfish against the published ECB vectors and against OpenSSL for keys of every length.
#include "zenutl/blowfish.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "digest/openssl_oracle.h"

namespace {

std::string FromHex(const char* hex) {
  std::string bytes;
  for (; hex[0] && hex[1]; hex += 2) {
    bytes += static_cast<char>(std::stoi(std::string(hex, 2), nullptr, 16));
  }
  return bytes;
}

TEST(BlowFish, EnciphersThePublishedEcbVectorsAsWritten) {
  const struct {
    const char* key;
    const char* plain;
    const char* cipher;
  } rows[] = {
      {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
      {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
      {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
      {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
      {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
      {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
      {"0123456789ABCDEF", "0000000000000000", "245946885754369A"},
      {"FEDCBA9876543210", "FFFFFFFFFFFFFFFF", "6B5C5A9C5D9E0A5A"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    const std::string key = FromHex(row.key);
    std::string block = FromHex(row.plain);
    BlowFish::Encrypt(key.data(), 8, &block[0], 8);
    EXPECT_EQ(FromHex(row.cipher), block);
    BlowFish::Decrypt(key.data(), 8, &block[0], 8);
    EXPECT_EQ(FromHex(row.plain), block);
  }
  // An empty key leaves the tables as published, which is what a key of zeros gives too.
  std::string block(8, '\0');
  BlowFish::Context(nullptr, 0).Encrypt(&block[0], 8);
  EXPECT_EQ(FromHex("4EF997456198DD78"), block);
}

TEST(BlowFish, AgreesWithOpenSslForKeysOfEveryLengthWrappingAcrossWords) {
  std::mt19937 random(1993);
  for (unsigned int keyLength = 1; keyLength <= 80; ++keyLength) {
    SCOPED_TRACE(keyLength);
    const std::string key = zenutl_test::RandomBytes(random, keyLength);
    const std::string plain = zenutl_test::RandomBytes(random, 8 * (random() % 40));
    std::string expected = plain;
    zenutl_test::OpenSslBlowfish(key, expected, true);
    const BlowFish::Context context(key.data(), keyLength);
    std::string actual = plain;
    context.Encrypt(&actual[0], static_cast<unsigned int>(actual.size()));
    ASSERT_EQ(expected, actual);
    context.Decrypt(&actual[0], static_cast<unsigned int>(actual.size()));
    ASSERT_EQ(plain, actual);
  }
}

TEST(BlowFish, RoundTripsEveryMultipleOfEightAndLeavesAShortTailAlone) {
  std::mt19937 random(8);
  const std::string key = "a key of some length";
  for (unsigned int length = 0; length <= 72; length += 8) {
    const std::string plain = zenutl_test::RandomBytes(random, length);
    std::string data = plain;
    BlowFish::Encrypt(key.data(), 20, &data[0], length);
    if (length != 0) {
      EXPECT_NE(plain, data);
    }
    BlowFish::Decrypt(key.data(), 20, &data[0], length);
    EXPECT_EQ(plain, data) << length;
  }
  std::string data = "0123456789abc";
  BlowFish::Encrypt(key.data(), 20, &data[0], 13);
  EXPECT_NE("01234567", data.substr(0, 8));
  EXPECT_EQ("89abc", data.substr(8));
}

}  // namespace

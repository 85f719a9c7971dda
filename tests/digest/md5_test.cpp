// MD5 against RFC 1321's suite and against OpenSSL, whole and in pieces, from memory, files and
// streams.
#include "zenutl/md5.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "digest/openssl_oracle.h"
#include "support/temp_dir.h"

namespace {

const struct {
  const char* text;
  const char* digest;
} kRfc1321Suite[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"1234567890123456789012345678901234567890123456789012345678901234567890123456789"
     "0",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

std::string Raw(const MD5& md5) {
  return std::string(reinterpret_cast<const char*>(*md5.GetRawDigest()), 16);
}

TEST(MD5, GivesRfc1321DigestsWholeAndSplitAnywhereOnceFinalized) {
  for (const auto& row : kRfc1321Suite) {
    SCOPED_TRACE(row.text);
    EXPECT_STREQ(row.digest, MD5(row.text).GetDigest());
    const unsigned int length = static_cast<unsigned int>(std::strlen(row.text));
    for (unsigned int split = 0; split <= length; ++split) {
      MD5 md5;
      md5.Update(row.text, split);
      md5.Update(row.text + split, length - split);
      ASSERT_EQ(nullptr, md5.GetDigest());
      ASSERT_EQ(nullptr, md5.GetRawDigest());
      md5.Finalize();
      md5.Update("ignored");
      md5.Finalize();
      ASSERT_TRUE(md5.IsFinalized());
      ASSERT_STREQ(row.digest, md5.GetDigest()) << "split at " << split;
    }
  }
}

TEST(MD5, AgreesWithOpenSslOnRandomInputFedInRandomPieces) {
  std::mt19937 random(1321);
  for (int round = 0; round < 300; ++round) {
    const std::size_t length = round < 200 ? round : random() % 20000;
    const std::string data = zenutl_test::RandomBytes(random, length);
    MD5 md5;
    for (std::size_t done = 0; done < length;) {
      const std::size_t piece = std::min<std::size_t>(length - done, random() % 150);
      md5.Update(data.data() + done, static_cast<unsigned int>(piece));
      done += piece;
    }
    md5.Finalize();
    ASSERT_EQ(zenutl_test::OpenSslMd5(data), Raw(md5)) << "length " << length;
    ASSERT_EQ(zenutl_test::OpenSslMd5(data), Raw(MD5(data.data(), length)));
  }
}

TEST(MD5, ReadsFilesFromTheirPositionAndStreamsToTheirEnd) {
  zenutl_test::TempDir dir;
  std::mt19937 random(7);
  const std::string data = zenutl_test::RandomBytes(random, 5000);
  const std::string path = dir.File("data.bin");
  std::ofstream(path, std::ios::binary) << data;

  FILE* file = std::fopen(path.c_str(), "rb");
  ASSERT_NE(nullptr, file);
  std::fseek(file, 100, SEEK_SET);
  const std::string fromFile = Raw(MD5(file));
  EXPECT_NE(0, std::feof(file)) << "the file is left at its end, not rewound";
  std::fclose(file);
  EXPECT_EQ(zenutl_test::OpenSslMd5(data.substr(100)), fromFile);

  std::ifstream stream(path, std::ios::binary);
  EXPECT_EQ(zenutl_test::OpenSslMd5(data), Raw(MD5(stream)));
  std::istringstream exact(data.substr(0, 2048));  // ends on a piece boundary
  EXPECT_EQ(zenutl_test::OpenSslMd5(data.substr(0, 2048)), Raw(MD5(exact)));

  EXPECT_STREQ(kRfc1321Suite[0].digest, MD5(static_cast<FILE*>(nullptr)).GetDigest());
  EXPECT_STREQ(kRfc1321Suite[0].digest, MD5(static_cast<const char*>(nullptr)).GetDigest());
}

}  // namespace

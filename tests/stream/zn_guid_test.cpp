#include "zenutl/zn_guid.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "stream/stream_test_support.h"
#include "support/exception_matchers.h"

namespace {

using zenutl_test::Bytes;

class ZnGuidTest : public zenutl_test::TempDirTest {};

const char kText[] = "00112233-4455-6677-8899-aabbccddeeff";

TEST_F(ZnGuidTest, TheTextNamesTheWindowsFieldsAndTheStreamFormWritesThemLittleEndian) {
  const ZnGuid id(kText);
  EXPECT_EQ(id.Data1, 0x00112233u);
  EXPECT_EQ(id.Data2, 0x4455);
  EXPECT_EQ(id.Data3, 0x6677);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(id.Data4), 8),
            Bytes({0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}));
  EXPECT_EQ(id.ToString(), kText);
  EXPECT_EQ(ZnGuid("00112233-4455-6677-8899-AABBCCDDEEFF"), id);

  const std::string bytes = Bytes({0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 0x88, 0x99, 0xAA,
                                   0xBB, 0xCC, 0xDD, 0xEE, 0xFF});
  std::ostringstream out;
  id.Write(out);
  EXPECT_EQ(out.str(), bytes);
  zenutl_test::ReadFromArchive(File("id.bin"), bytes + "x", [&](StreamReader& r) {
    EXPECT_EQ(ZnGuid(r), id);
    EXPECT_EQ(r.Tell(), 16);
  });
}

TEST_F(ZnGuidTest, AnyMalformedTextGivesTheNilIdentifier) {
  const char* const texts[] = {
      "",
      "{00112233-4455-6677-8899-aabbccddeeff}",
      "00112233-4455-6677-8899-aabbccddeef",
      "00112233-4455-6677-8899-aabbccddeeff0",
      "00112233-4455-6677-8899-aabbccddeeff ",
      "0011223304455-6677-8899-aabbccddeeff",
      "00112233-4455-6677-8899-aabbccddeefg",
      "0x112233-4455-6677-8899-aabbccddeeff",
  };
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(ZnGuid(text).IsEmpty());
  }
  EXPECT_TRUE(ZnGuid(static_cast<const char*>(nullptr)).IsEmpty());
  EXPECT_TRUE(ZnGuid(static_cast<const _GUID*>(nullptr)).IsEmpty());
  EXPECT_EQ(ZnGuid().ToStdString(), "00000000-0000-0000-0000-000000000000");
}

TEST_F(ZnGuidTest, NewIdentifiersDifferAndSurviveTheirText) {
  const ZnGuid a = ZnGuid::NewID(), b = ZnGuid::NewID();
  EXPECT_FALSE(a.IsEmpty());
  EXPECT_NE(a, b);
  EXPECT_EQ(ZnGuid(a.ToStdString().c_str()), a);
  ZnGuid emptied = a;
  emptied.Empty();
  EXPECT_TRUE(emptied.IsEmpty());
  EXPECT_EQ(emptied, ZnGuid());
}

TEST_F(ZnGuidTest, OrdersByTheFieldsAsNumbersNotByTheirBytesInMemory) {
  // Each pair in ascending order. The first fields would sort the other way by their memory.
  const char* const ascending[][2] = {
      {"00000000-0000-0000-0000-000000000000", "00000000-0000-0000-0000-000000000001"},
      {"00000001-0000-0000-0000-000000000000", "00000100-0000-0000-0000-000000000000"},
      {"00000000-0001-0000-0000-000000000000", "00000000-0100-0000-0000-000000000000"},
      {"00000000-0000-0001-0000-000000000000", "00000000-0000-0100-0000-000000000000"},
      {"ffffffff-ffff-ffff-0000-000000000001", "ffffffff-ffff-ffff-0100-000000000000"},
      {"7fffffff-0000-0000-0000-000000000000", "80000000-0000-0000-0000-000000000000"},
  };
  for (const auto& pair : ascending) {
    SCOPED_TRACE(pair[0]);
    const ZnGuid low(pair[0]), high(pair[1]);
    EXPECT_TRUE(low < high && low <= high && high > low && high >= low && low != high);
    EXPECT_FALSE(high < low || high <= low || low > high || low >= high || low == high);
    EXPECT_TRUE(low <= ZnGuid(pair[0]) && low >= ZnGuid(pair[0]));
  }
}

TEST_F(ZnGuidTest, AShortStreamThrowsAndLeavesTheIdentifierAsItWas) {
  ZnGuid id(kText);
  std::istringstream in(std::string(15, '\0'));
  EXPECT_THROW_WHY(id.Read(in), StreamException, "ReadUInt8 failed");
  EXPECT_EQ(id.ToStdString(), kText);
}

}  // namespace

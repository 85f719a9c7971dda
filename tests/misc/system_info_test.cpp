#include "zenutl/system_info.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <pwd.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "misc/system_info_internal.h"
#include "platform/native_path.h"
#include "platform/system_names.h"
#include "support/temp_dir.h"

namespace {

using zenutl::detail::SystemNameCalls;

std::string HostNameOracle() {
  char name[1025] = {};
  gethostname(name, sizeof name - 1);
  return name;
}

// A fake system call that answers a name of `Length` letters, in the manner of the real ones,
// and notes the size and buffer it was handed.
DWORD gSizeHanded = 0;
bool gBufferWasZeroed = false;
template <int Length>
bool NameOfLength(char* buffer, DWORD* size) {
  gSizeHanded = *size;
  gBufferWasZeroed = std::string(buffer, *size + 1) == std::string(*size + 1, '\0');
  if (Length + 1 > static_cast<int>(*size)) return false;
  std::string(Length, 'n').copy(buffer, Length);
  return true;
}
DWORD NoExecutablePath(char*, DWORD) {
  return 0;
}

TEST(ZnSystemInfoNames, AreThoseOfThePasswdEntryAndTheHost) {
  const passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const std::string fullName =
      std::string(entry->pw_gecos).substr(0, std::string(entry->pw_gecos).find(','));
  EXPECT_STREQ(ZnSystemInfo::GetUserNameA(), fullName.empty() ? entry->pw_name : fullName.c_str());

  const std::string host = HostNameOracle();
  std::string expectedHost = host;
  addrinfo hints{};
  hints.ai_flags = AI_CANONNAME;
  addrinfo* result = nullptr;
  if (zenutl::platform::HostsFileListsName("/etc/hosts", host.c_str()) &&
      getaddrinfo(host.c_str(), nullptr, &hints, &result) == 0) {
    expectedHost = result->ai_canonname;
    freeaddrinfo(result);
  }
  EXPECT_EQ(std::string(ZnSystemInfo::GetComputerNameA()), expectedHost);
  EXPECT_STREQ(ZnSystemInfo::GetDomainName("\\\\server"), "");
  EXPECT_STREQ(ZnSystemInfo::GetDomainName(nullptr), "");
}

TEST(ZnSystemInfoNames, FallBackToThePlainCallThenToUnknown) {
  const struct {
    bool (*better)(char*, DWORD*);
    bool (*plain)(char*, DWORD*);
    std::string expected;
  } cases[] = {
      {&NameOfLength<12>, &NameOfLength<3>, "nnnnnnnnnnnn"},
      {&NameOfLength<4096>, &NameOfLength<3>, "nnn"},
      {&NameOfLength<4096>, &NameOfLength<4096>, "<unknown>"},
      {&NameOfLength<1023>, &NameOfLength<3>, "nnn"},  // 1023 letters don't fit, 1022 do
      {&NameOfLength<1022>, &NameOfLength<3>, std::string(1022, 'n')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected.substr(0, 20));
    SystemNameCalls calls = zenutl::detail::PlatformSystemNameCalls();
    calls.userDisplayName = calls.fullyQualifiedHostName = c.better;
    calls.userLoginName = calls.plainHostName = c.plain;
    const SystemNameCalls previous = zenutl::detail::SetSystemNameCalls(calls);
    gBufferWasZeroed = false;
    const std::string user(ZnSystemInfo::GetUserNameA());
    const bool zeroed = gBufferWasZeroed;
    const std::string computer(ZnSystemInfo::GetComputerNameA());
    zenutl::detail::SetSystemNameCalls(previous);
    EXPECT_EQ(user, c.expected);
    EXPECT_EQ(computer, c.expected);
    EXPECT_EQ(gSizeHanded, 1023u);
    EXPECT_TRUE(zeroed);
  }
}

class HostsFileTest : public zenutl_test::TempDirTest {};

TEST_F(HostsFileTest, FindsANameOnAnyLineButNotInComments) {
  zenutl_test::WriteWholeFile(File("hosts"),
                              "127.0.0.1\tlocalhost\n# 10.0.0.1 commented\n"
                              "127.0.1.1   box.example.org  Box # remark\n10.0.0.2\n");
  const struct {
    const char* name;
    bool listed;
  } cases[] = {{"localhost", true}, {"box.example.org", true}, {"box", true}, {"commented", false},
               {"remark", false},   {"127.0.0.1", false},      {"bo", false}, {"", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(zenutl::platform::HostsFileListsName(File("hosts").c_str(), c.name), c.listed);
  }
  EXPECT_FALSE(zenutl::platform::HostsFileListsName(File("missing").c_str(), "localhost"));
}

TEST(ZnSystemInfoApplicationName, IsTheExecutablesFileNameUnlessTheHostSetsOne) {
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "system_info_test");
  ZnSystemInfo::SetApplicationName("Lumo Analyser");
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "Lumo Analyser");
  ZnSystemInfo::SetApplicationName(nullptr);
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "system_info_test");
  SystemNameCalls calls = zenutl::detail::PlatformSystemNameCalls();
  calls.executablePath = &NoExecutablePath;
  const SystemNameCalls previous = zenutl::detail::SetSystemNameCalls(calls);
  const std::string withoutPath(ZnSystemInfo::GetApplicationName());
  zenutl::detail::SetSystemNameCalls(previous);
  EXPECT_EQ(withoutPath, "");
}

// Each test starts with the version not read yet, and leaves it so.
class ApplicationVersionTest : public zenutl_test::TempDirTest {
 protected:
  ApplicationVersionTest() { zenutl::detail::ForgetApplicationVersion(); }
  ~ApplicationVersionTest() override { zenutl::detail::ForgetApplicationVersion(); }

  std::string FileWithVersion(const std::string& name, int a, int b, int c, int d) {
    zenutl_test::WriteWholeFile(File(name), "binary");
    if (a >= 0) ZnSystemInfo::SetApplicationVersion(a, b, c, d, File(name).c_str());
    return File(name);
  }
  static std::vector<int> Read(const std::string& file) {
    int parts[4] = {-7, -7, -7, -7};
    ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], file.c_str());
    return std::vector<int>(parts, parts + 4);
  }
};

TEST_F(ApplicationVersionTest, PrintsTheProgramsVersionInEachFormat) {
  const struct {
    int parts[4];
    int format;
    const char* expected;
  } cases[] = {{{5, 1, 0, 0}, 0, "5.1"},
               {{5, 0, 0, 0}, 0, "5"},
               {{5, 0, 0, 3}, 0, "5.0.0.3"},
               {{5, 0, 3, 0}, 0, "5.0.3"},
               {{5, 1, 0, 0}, 1, "5"},
               {{5, 1, 0, 0}, 3, "5.1.0"},
               {{5, 1, 0, 0}, 4, "5.1.0.0"},
               {{5, 1, 0, 0}, 7, "5.1.0.0"},
               {{65536 + 7, -1, 2, 0}, 0, "7.65535.2"}};  // low 16 bits, as in a resource
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    zenutl::detail::ForgetApplicationVersion();
    ZnSystemInfo::SetApplicationVersion(c.parts[0], c.parts[1], c.parts[2], c.parts[3]);
    EXPECT_STREQ(
        ZnSystemInfo::GetApplicationVersion(static_cast<ZnSystemInfo::EVersionFormat>(c.format)),
        c.expected);
  }
}

TEST_F(ApplicationVersionTest, FirstReadDecidesForTheRestOfTheProcess) {
  const std::string first = FileWithVersion("first.so", 5, 1, 0, 0);
  const std::string second = FileWithVersion("second.so", 6, 2, 7, 8);
  ZnSystemInfo::SetApplicationVersion(9, 9, 9, 9);
  EXPECT_EQ(Read(first), (std::vector<int>{5, 1, 0, 0}));
  EXPECT_EQ(Read(second), (std::vector<int>{5, 1, 0, 0}));
  EXPECT_STREQ(ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionAuto), "5.1");
}

TEST_F(ApplicationVersionTest, FindsAFileByAnySpellingAndReadsOthersAsZeros) {
  const std::string file = FileWithVersion("module.dll", 3, 4, 5, 6);
  const std::string unversioned = FileWithVersion("plain.so", -1, 0, 0, 0);
  const struct {
    std::string spelling;
    std::vector<int> expected;
  } cases[] = {
      {zenutl::platform::FromNativePath(file), {3, 4, 5, 6}},
      {unversioned, {0, 0, 0, 0}},
      {File("missing.so"), {0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.spelling);
    zenutl::detail::ForgetApplicationVersion();
    EXPECT_EQ(Read(c.spelling), c.expected);
  }
}

}  // namespace

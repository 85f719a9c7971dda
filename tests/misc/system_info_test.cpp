#include "zenutl/system_info.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
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

// Replaces the system calls for one test and puts the platform's back afterwards.
class ScopedSystemNameCalls {
 public:
  explicit ScopedSystemNameCalls(const SystemNameCalls& calls)
      : previous_(zenutl::detail::SetSystemNameCalls(calls)) {}
  ~ScopedSystemNameCalls() { zenutl::detail::SetSystemNameCalls(previous_); }

 private:
  SystemNameCalls previous_;
};

// Fakes that answer like the system calls, and note what they were handed.
DWORD gSizeHanded = 0;
bool gBufferWasZeroed = false;
bool Answer(const std::string& name, char* buffer, DWORD* size) {
  gSizeHanded = *size;
  gBufferWasZeroed = true;
  for (DWORD i = 0; i <= *size; ++i) gBufferWasZeroed = gBufferWasZeroed && buffer[i] == '\0';
  if (name.size() + 1 > *size) return false;
  name.copy(buffer, name.size());
  buffer[name.size()] = '\0';
  *size = static_cast<DWORD>(name.size());
  return true;
}
bool Fails(char*, DWORD*) {
  return false;
}
bool DisplayName(char* buffer, DWORD* size) {
  return Answer("Ada Lovelace", buffer, size);
}
bool LoginName(char* buffer, DWORD* size) {
  return Answer("ada", buffer, size);
}
bool LongestName(char* buffer, DWORD* size) {
  return Answer(std::string(1022, 'n'), buffer, size);
}
bool TooLongName(char* buffer, DWORD* size) {
  return Answer(std::string(1023, 'n'), buffer, size);
}
DWORD NoExecutablePath(char*, DWORD) {
  return 0;
}

TEST(ZnSystemInfoUserName, IsTheFullNameOfThePasswdEntryElseTheLoginName) {
  const passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const std::string gecos = entry->pw_gecos ? entry->pw_gecos : "";
  const std::string fullName = gecos.substr(0, gecos.find(','));
  EXPECT_STREQ(ZnSystemInfo::GetUserNameA(), fullName.empty() ? entry->pw_name : fullName.c_str());
}

TEST(ZnSystemInfoUserName, TakesTheFullNamePartOfGecos) {
  const struct {
    const char* gecos;
    const char* fullName;
  } cases[] = {{"Ada Lovelace,Room 4,555-0100,,", "Ada Lovelace"},
               {"Ada Lovelace", "Ada Lovelace"},
               {",,,", ""},
               {"", ""},
               {"Åsa Öberg,", "Åsa Öberg"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.gecos);
    EXPECT_EQ(zenutl::platform::FullNameOfGecos(c.gecos), c.fullName);
  }
}

TEST(ZnSystemInfoNames, FallBackToThePlainCallThenToUnknown) {
  const struct {
    bool (*better)(char*, DWORD*);
    bool (*plain)(char*, DWORD*);
    const char* expected;
  } cases[] = {
      {&DisplayName, &LoginName, "Ada Lovelace"},
      {&Fails, &LoginName, "ada"},
      {&Fails, &Fails, "<unknown>"},
      {&TooLongName, &LoginName, "ada"},
      {&Fails, &TooLongName, "<unknown>"},
      {&LongestName, &Fails, nullptr},  // 1022 characters still fit
  };
  const SystemNameCalls platform = zenutl::detail::PlatformSystemNameCalls();
  for (const auto& c : cases) {
    const std::string expected = c.expected ? c.expected : std::string(1022, 'n');
    SCOPED_TRACE(expected.substr(0, 20));
    {
      SystemNameCalls calls = platform;
      calls.userDisplayName = c.better;
      calls.userLoginName = c.plain;
      ScopedSystemNameCalls scoped(calls);
      EXPECT_EQ(std::string(ZnSystemInfo::GetUserNameA()), expected);
    }
    {
      SystemNameCalls calls = platform;
      calls.fullyQualifiedHostName = c.better;
      calls.plainHostName = c.plain;
      ScopedSystemNameCalls scoped(calls);
      EXPECT_EQ(std::string(ZnSystemInfo::GetComputerNameA()), expected);
    }
  }
}

TEST(ZnSystemInfoNames, HandEachCallAZeroedBufferOf1023Characters) {
  SystemNameCalls calls = zenutl::detail::PlatformSystemNameCalls();
  calls.userDisplayName = &Fails;
  calls.userLoginName = &LoginName;
  ScopedSystemNameCalls scoped(calls);
  gSizeHanded = 0;
  gBufferWasZeroed = false;
  ZnSystemInfo::GetUserNameA();
  EXPECT_EQ(gSizeHanded, 1023u);
  EXPECT_TRUE(gBufferWasZeroed);
}

TEST(ZnSystemInfoComputerName, IsTheCanonicalNameOfALocallyListedHostElseTheHostName) {
  const std::string host = HostNameOracle();
  ASSERT_FALSE(host.empty());
  std::string expected = host;
  if (zenutl::platform::HostsFileListsName("/etc/hosts", host.c_str())) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_CANONNAME;
    addrinfo* result = nullptr;
    ASSERT_EQ(getaddrinfo(host.c_str(), nullptr, &hints, &result), 0);
    expected = result->ai_canonname;
    freeaddrinfo(result);
  }
  EXPECT_EQ(std::string(ZnSystemInfo::GetComputerNameA()), expected);
}

TEST(ZnSystemInfoComputerName, PlainNameMustFitWithItsTerminator) {
  const std::string host = HostNameOracle();
  char buffer[1024] = {};
  DWORD size = static_cast<DWORD>(host.size());
  EXPECT_FALSE(zenutl::platform::GetPlainHostName(buffer, &size));
  size = static_cast<DWORD>(host.size() + 1);
  ASSERT_TRUE(zenutl::platform::GetPlainHostName(buffer, &size));
  EXPECT_EQ(std::string(buffer), host);
  EXPECT_EQ(size, host.size());
}

class HostsFileTest : public zenutl_test::TempDirTest {};

TEST_F(HostsFileTest, FindsANameOnAnyLineButNotInComments) {
  const std::string hosts = File("hosts");
  zenutl_test::WriteWholeFile(hosts,
                              "127.0.0.1\tlocalhost\n"
                              "# 10.0.0.1 commented\n"
                              "127.0.1.1   box.example.org  Box # trailing remark\n"
                              "::1 ip6-localhost ip6-loopback\n"
                              "10.0.0.2\n");
  const struct {
    const char* name;
    bool listed;
  } cases[] = {{"localhost", true},
               {"box.example.org", true},
               {"box", true},
               {"BOX.EXAMPLE.ORG", true},
               {"ip6-loopback", true},
               {"commented", false},
               {"remark", false},
               {"127.0.0.1", false},
               {"10.0.0.2", false},
               {"bo", false},
               {"", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(zenutl::platform::HostsFileListsName(hosts.c_str(), c.name), c.listed);
  }
  EXPECT_FALSE(zenutl::platform::HostsFileListsName(File("missing").c_str(), "localhost"));
}

TEST(ZnSystemInfoDomainName, IsEmptyWithoutABrowseService) {
  EXPECT_STREQ(ZnSystemInfo::GetDomainName("\\\\server"), "");
  EXPECT_STREQ(ZnSystemInfo::GetDomainName(HostNameOracle().c_str()), "");
  EXPECT_STREQ(ZnSystemInfo::GetDomainName(nullptr), "");
}

TEST(ZnSystemInfoApplicationName, IsTheExecutablesFileNameUnlessTheHostSetsOne) {
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "system_info_test");
  ZnSystemInfo::SetApplicationName("Lumo Analyser");
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "Lumo Analyser");
  ZnSystemInfo::SetApplicationName(nullptr);
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "system_info_test");
  SystemNameCalls calls = zenutl::detail::PlatformSystemNameCalls();
  calls.executablePath = &NoExecutablePath;
  ScopedSystemNameCalls scoped(calls);
  EXPECT_STREQ(ZnSystemInfo::GetApplicationName(), "");
}

TEST(ZnSystemInfoApplicationName, ExecutablePathIsCutToTheBufferLikeTheWindowsCall) {
  char full[MAX_PATH] = {};
  const DWORD length = zenutl::platform::GetExecutablePath(full, MAX_PATH);
  ASSERT_GT(length, 0u);
  EXPECT_EQ(full[0], '/');
  EXPECT_EQ(access(full, X_OK), 0);
  char cut[10] = {};
  EXPECT_EQ(zenutl::platform::GetExecutablePath(cut, sizeof cut), 10u);
  EXPECT_EQ(std::string(cut), std::string(full).substr(0, 9));
}

// Each test starts with the version not read yet, and leaves it so.
class ApplicationVersionTest : public zenutl_test::TempDirTest {
 protected:
  ApplicationVersionTest() { zenutl::detail::ForgetApplicationVersion(); }
  ~ApplicationVersionTest() override { zenutl::detail::ForgetApplicationVersion(); }

  std::string VersionedFile(const std::string& name) {
    const std::string path = File(name);
    zenutl_test::WriteWholeFile(path, "binary");
    return path;
  }
};

TEST_F(ApplicationVersionTest, AutoFormatStopsAtTheLastPartThatIsNotZero) {
  const struct {
    int parts[4];
    const char* expected;
  } cases[] = {{{5, 1, 0, 0}, "5.1"},
               {{5, 0, 0, 0}, "5"},
               {{5, 0, 0, 3}, "5.0.0.3"},
               {{5, 0, 3, 0}, "5.0.3"},
               {{0, 0, 0, 0}, "0"},
               {{0, 0, 0, 9}, "0.0.0.9"},
               {{65535, 2, 3, 4}, "65535.2.3.4"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    zenutl::detail::ForgetApplicationVersion();
    ZnSystemInfo::SetApplicationVersion(c.parts[0], c.parts[1], c.parts[2], c.parts[3]);
    EXPECT_STREQ(ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionAuto), c.expected);
  }
}

TEST_F(ApplicationVersionTest, FixedFormatsPrintTheirNumberOfParts) {
  ZnSystemInfo::SetApplicationVersion(5, 1, 0, 0);
  const struct {
    int format;
    const char* expected;
  } cases[] = {{1, "5"}, {2, "5.1"}, {3, "5.1.0"}, {4, "5.1.0.0"}, {7, "5.1.0.0"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.format);
    EXPECT_STREQ(
        ZnSystemInfo::GetApplicationVersion(static_cast<ZnSystemInfo::EVersionFormat>(c.format)),
        c.expected);
  }
}

TEST_F(ApplicationVersionTest, FirstReadDecidesForTheRestOfTheProcess) {
  const std::string first = VersionedFile("first.so");
  const std::string second = VersionedFile("second.so");
  ZnSystemInfo::SetApplicationVersion(5, 1, 0, 0, first.c_str());
  ZnSystemInfo::SetApplicationVersion(6, 2, 7, 8, second.c_str());
  ZnSystemInfo::SetApplicationVersion(9, 9, 9, 9);
  int parts[4] = {-7, -7, -7, -7};
  ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], first.c_str());
  EXPECT_EQ(std::vector<int>(parts, parts + 4), (std::vector<int>{5, 1, 0, 0}));
  ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], second.c_str());
  EXPECT_EQ(std::vector<int>(parts, parts + 4), (std::vector<int>{5, 1, 0, 0}));
  ZnSystemInfo::SetApplicationVersion(1, 2, 3, 4, first.c_str());
  EXPECT_STREQ(ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionAuto), "5.1");
}

TEST_F(ApplicationVersionTest, FindsAFileByAnySpellingOfItsPath) {
  const std::string file = VersionedFile("module.dll");
  ZnSystemInfo::SetApplicationVersion(3, 4, 5, 6, file.c_str());
  const std::string windowsForm = zenutl::platform::FromNativePath(file);
  const std::string roundabout =
      Dir().string() + "/../" + Dir().filename().string() + "/module.dll";
  for (const std::string& spelling : {windowsForm, roundabout}) {
    SCOPED_TRACE(spelling);
    zenutl::detail::ForgetApplicationVersion();
    int parts[4] = {};
    ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], spelling.c_str());
    EXPECT_EQ(std::vector<int>(parts, parts + 4), (std::vector<int>{3, 4, 5, 6}));
  }
}

TEST_F(ApplicationVersionTest, FileWithoutVersionReadsAsZerosAndIsStoredSo) {
  const std::string unversioned = VersionedFile("plain.so");
  const std::string versioned = VersionedFile("versioned.so");
  ZnSystemInfo::SetApplicationVersion(2, 0, 0, 0, versioned.c_str());
  for (const std::string& file : {unversioned, File("missing.so")}) {
    SCOPED_TRACE(file);
    zenutl::detail::ForgetApplicationVersion();
    int parts[4] = {-7, -7, -7, -7};
    ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], file.c_str());
    EXPECT_EQ(std::vector<int>(parts, parts + 4), (std::vector<int>{0, 0, 0, 0}));
  }
  EXPECT_STREQ(ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionFourParts), "0.0.0.0");
  int parts[4] = {-7, -7, -7, -7};
  ZnSystemInfo::GetApplicationVersion(parts[0], parts[1], parts[2], parts[3], versioned.c_str());
  EXPECT_EQ(std::vector<int>(parts, parts + 4), (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(ApplicationVersionTest, PartsKeepTheirLow16Bits) {
  ZnSystemInfo::SetApplicationVersion(65536 + 7, -1, 70000, 0);
  EXPECT_STREQ(ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionFourParts),
               "7.65535.4464.0");
}

TEST_F(ApplicationVersionTest, ConcurrentFirstReadsAgree) {
  ZnSystemInfo::SetApplicationVersion(4, 3, 2, 1);
  std::vector<CString> texts(8);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([i, &texts] {
      texts[i] = ZnSystemInfo::GetApplicationVersion(ZnSystemInfo::eVersionAuto);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const CString& text : texts) EXPECT_STREQ(text, "4.3.2.1");
}

}  // namespace

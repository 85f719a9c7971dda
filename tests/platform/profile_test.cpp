#include "platform/profile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/atomic_file.h"
#include "support/temp_dir.h"

namespace {

using zenutl::platform::GetPrivateProfileSectionNamesA;
using zenutl::platform::GetPrivateProfileStringA;
using zenutl::platform::GetPrivateProfileStringW;
using zenutl::platform::LastProfileError;
using zenutl::platform::WritePrivateProfileStringA;
using zenutl::platform::WritePrivateProfileStringW;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class Profile : public zenutl_test::TempDirTest {
 protected:
  Profile() : path_(File("test.ini")) {}

  const char* path() const { return path_.c_str(); }
  std::wstring path_wide() const { return std::wstring(path_.begin(), path_.end()); }

  // The value, or "?" when absent.
  std::string Read(const char* section, const char* key) const {
    char buffer[1024];
    GetPrivateProfileStringA(section, key, "?", buffer, sizeof(buffer), path());
    return buffer;
  }
  BOOL Write(const char* section, const char* key, const char* value) const {
    return WritePrivateProfileStringA(section, key, value, path());
  }
  // The names of a zero-separated list as returned.
  static std::vector<std::string> Names(const char* buffer, DWORD returned) {
    std::vector<std::string> names;
    for (DWORD i = 0; i < returned; i += static_cast<DWORD>(names.back().size()) + 1) {
      names.push_back(buffer + i);
    }
    return names;
  }
  std::vector<std::string> Sections() const {
    char buffer[4096];
    return Names(buffer, GetPrivateProfileSectionNamesA(buffer, sizeof(buffer), path()));
  }
  std::vector<std::string> Keys(const char* section) const {
    char buffer[4096];
    return Names(buffer,
                 GetPrivateProfileStringA(section, nullptr, "", buffer, sizeof(buffer), path()));
  }

 private:
  std::string path_;
};

TEST_F(Profile, NamesCompareWithoutCaseAndBlanksDontCount) {
  WriteWholeFile(path(),
                 "; comment line\n"
                 "orphan=before any section\n"
                 "[General]\n"
                 "  Name  =  Value with spaces  \t\n"
                 "Other=1\n"
                 ";Hidden=2\n"
                 "no equals sign here\n"
                 "Empty=\n"
                 " [ Spaced Section ] trailing\n"
                 "Key=x=y\n"
                 "#hash=3\n");
  const struct {
    const char* section;
    const char* key;
    const char* expected;
  } rows[] = {{"general", "name", "Value with spaces"},
              {"GENERAL", "OTHER", "1"},
              {" General ", "\tName ", "Value with spaces"},
              {"General", "Hidden", "?"},
              {"General", ";Hidden", "?"},
              {"General", "no equals sign here", "?"},
              {"General", "Empty", ""},
              {"spaced section", "KEY", "x=y"},
              {"Spaced Section", "#hash", "3"},
              {"", "orphan", "?"},
              {"Missing", "Name", "?"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.section) + "/" + row.key);
    EXPECT_EQ(Read(row.section, row.key), row.expected);
  }
  EXPECT_EQ(Sections(), (std::vector<std::string>{"General", "Spaced Section"}));
  EXPECT_EQ(Keys("general"), (std::vector<std::string>{"Name", "Other", "Empty"}));
  EXPECT_EQ(Keys("missing"), std::vector<std::string>{});
}

TEST_F(Profile, FirstOfDuplicateKeysAndSectionsWins) {
  WriteWholeFile(path(), "[A]\nk=first\nK=second\n[B]\nk=b\n[a]\nk=third\nj=only in the second\n");
  EXPECT_EQ(Read("A", "k"), "first");
  EXPECT_EQ(Read("a", "j"), "?");
  EXPECT_EQ(Sections(), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(Keys("A"), std::vector<std::string>{"k"});

  ASSERT_EQ(Write("a", "K", "new"), 1);
  EXPECT_EQ(ReadWholeFile(path()),
            "[A]\nk=new\nK=second\n[B]\nk=b\n[a]\nk=third\nj=only in the second\n");
  ASSERT_EQ(Write("A", "k", nullptr), 1);  // every copy in the section that counts goes
  EXPECT_EQ(ReadWholeFile(path()), "[A]\n[B]\nk=b\n[a]\nk=third\nj=only in the second\n");
  EXPECT_EQ(Read("A", "k"), "?");
}

TEST_F(Profile, MissingFileReadsAsEmptyAndTheFirstWriteCreatesIt) {
  EXPECT_EQ(Read("s", "k"), "?");
  EXPECT_EQ(Sections(), std::vector<std::string>{});
  EXPECT_EQ(Write("s", "k", nullptr), 1);
  EXPECT_EQ(Write("s", nullptr, nullptr), 1);
  EXPECT_FALSE(boost::filesystem::exists(path())) << "a removal created the file";
  ASSERT_EQ(Write("Section", "Key", "value"), 1);
  EXPECT_EQ(ReadWholeFile(path()), "[Section]\nKey=value\n");
  EXPECT_EQ(Read("section", "key"), "value");
}

TEST_F(Profile, RewriteTouchesOnlyTheLinesItChanges) {
  const std::string bom = "\xEF\xBB\xBF";
  WriteWholeFile(path(), bom +
                             "; settings\r\n"
                             "[One]\r\n"
                             "a = 1\r\n"
                             "; about b\r\n"
                             "b=2\r\n"
                             "junk line\r\n"
                             "\r\n"
                             "; the second section\r\n"
                             "[Two]\r\n"
                             "c=3");
  ASSERT_EQ(Write("one", "A", "10"), 1);
  ASSERT_EQ(Write("One", "new", "n"), 1);
  ASSERT_EQ(Write("two", "d", "4"), 1);
  ASSERT_EQ(Write("Three", "e", "5"), 1);
  EXPECT_EQ(ReadWholeFile(path()), bom +
                                       "; settings\r\n"
                                       "[One]\r\n"
                                       "a = 10\r\n"
                                       "; about b\r\n"
                                       "b=2\r\n"
                                       "new=n\r\n"
                                       "junk line\r\n"
                                       "\r\n"
                                       "; the second section\r\n"
                                       "[Two]\r\n"
                                       "c=3\r\n"
                                       "d=4\r\n"
                                       "[Three]\r\n"
                                       "e=5\r\n");
  EXPECT_EQ(Read("One", "a"), "10");

  // Removing a section keeps what follows its last key: it introduces the next section.
  ASSERT_EQ(Write("ONE", nullptr, nullptr), 1);
  EXPECT_EQ(ReadWholeFile(path()), bom +
                                       "; settings\r\n"
                                       "junk line\r\n"
                                       "\r\n"
                                       "; the second section\r\n"
                                       "[Two]\r\n"
                                       "c=3\r\n"
                                       "d=4\r\n"
                                       "[Three]\r\n"
                                       "e=5\r\n");
  EXPECT_EQ(Read("One", "b"), "?");
}

TEST_F(Profile, KeysAndSectionsKeepTheCaseTheyWereFirstWrittenIn) {
  ASSERT_EQ(Write("MySection", "MyKey", "1"), 1);
  ASSERT_EQ(Write("MYSECTION", "mykey", "2"), 1);
  ASSERT_EQ(Write("mysection", "Second", "3"), 1);
  EXPECT_EQ(ReadWholeFile(path()), "[MySection]\nMyKey=2\nSecond=3\n");
  // Writing the value a key already has leaves the file alone.
  struct stat before;
  ASSERT_EQ(::stat(path(), &before), 0);
  ASSERT_EQ(Write("mysection", "MYKEY", "2"), 1);
  struct stat after;
  ASSERT_EQ(::stat(path(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Profile, FillsBuffersWithTheWindowsTruncationRules) {
  WriteWholeFile(path(), "[s]\nvalue=abcdef\nalpha=1\nbeta=2\ngamma=3\n[t]\n");
  const struct {
    DWORD size;
    DWORD returned;
    std::string bytes;  // the buffer up to `returned` plus what must follow
  } values[] = {{100, 6, std::string("abcdef\0", 7)},
                {7, 6, std::string("abcdef\0", 7)},
                {6, 5, std::string("abcde\0", 6)},
                {1, 0, std::string("\0", 1)}};
  for (const auto& row : values) {
    SCOPED_TRACE(row.size);
    char buffer[128];
    std::memset(buffer, 'z', sizeof(buffer));
    EXPECT_EQ(GetPrivateProfileStringA("s", "value", "", buffer, row.size, path()), row.returned);
    EXPECT_EQ(std::string(buffer, row.bytes.size()), row.bytes);
    EXPECT_EQ(buffer[row.size], 'z') << "wrote past the buffer";
  }
  char untouched[4] = "zzz";
  EXPECT_EQ(GetPrivateProfileStringA("s", "value", "", untouched, 0, path()), 0u);
  EXPECT_STREQ(untouched, "zzz");

  // "value\0alpha\0beta\0gamma\0\0" takes 24 places.
  const struct {
    DWORD size;
    DWORD returned;
    std::string bytes;
  } lists[] = {{24, 23, std::string("value\0alpha\0beta\0gamma\0\0", 24)},
               {23, 21, std::string("value\0alpha\0beta\0gamm\0\0", 23)},
               {14, 12, std::string("value\0alpha\0\0\0", 14)},
               {15, 13, std::string("value\0alpha\0b\0\0", 15)},
               {2, 0, std::string("\0\0", 2)}};
  for (const auto& row : lists) {
    SCOPED_TRACE(row.size);
    char buffer[128];
    std::memset(buffer, 'z', sizeof(buffer));
    EXPECT_EQ(GetPrivateProfileStringA("s", nullptr, "", buffer, row.size, path()), row.returned);
    EXPECT_EQ(std::string(buffer, row.bytes.size()), row.bytes);
    EXPECT_EQ(buffer[row.size], 'z') << "wrote past the buffer";
  }
  char sections[5];
  EXPECT_EQ(GetPrivateProfileSectionNamesA(sections, sizeof(sections), path()), 4u);
  EXPECT_EQ(std::string(sections, 5), std::string("s\0t\0\0", 5));
  EXPECT_EQ(GetPrivateProfileSectionNamesA(sections, 4, path()), 2u);
  EXPECT_EQ(std::string(sections, 4), std::string("s\0\0\0", 4));
  // The default is cut like a value, and loses its trailing blanks.
  char buffer[8];
  EXPECT_EQ(GetPrivateProfileStringA("s", "nope", "default  ", buffer, 5, path()), 4u);
  EXPECT_STREQ(buffer, "defa");
  EXPECT_EQ(GetPrivateProfileStringA("s", "nope", "ab  ", buffer, 8, path()), 2u);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_EQ(GetPrivateProfileStringA("s", "nope", nullptr, buffer, 8, path()), 0u);
  EXPECT_STREQ(buffer, "");
}

TEST_F(Profile, WideCallsKeepUtf8OnDisk) {
  const std::wstring file(path_wide());
  ASSERT_EQ(WritePrivateProfileStringW(L"R\u00e4kna", L"Gr\u00f6\u00dfe", L"\u00c4nderung \u20ac",
                                       file.c_str()),
            1);
  EXPECT_EQ(ReadWholeFile(path()),
            "[R\xc3\xa4kna]\nGr\xc3\xb6\xc3\x9f"
            "e=\xc3\x84nderung \xe2\x82\xac\n");
  wchar_t buffer[64];
  EXPECT_EQ(
      GetPrivateProfileStringW(L"R\u00e4kna", L"GR\u00f6\u00dfE", L"?", buffer, 64, file.c_str()),
      10u);
  EXPECT_EQ(std::wstring(buffer), L"\u00c4nderung \u20ac");
  EXPECT_EQ(Read("R\xc3\xa4kna",
                 "Gr\xc3\xb6\xc3\x9f"
                 "e"),
            "\xc3\x84nderung \xe2\x82\xac");
  // Truncation counts wide characters.
  EXPECT_EQ(
      GetPrivateProfileStringW(L"R\u00e4kna", L"Gr\u00f6\u00dfe", L"?", buffer, 3, file.c_str()),
      2u);
  EXPECT_EQ(std::wstring(buffer), L"\u00c4n");
  EXPECT_EQ(GetPrivateProfileStringW(L"R\u00e4kna", nullptr, L"", buffer, 64, file.c_str()), 6u);
  EXPECT_EQ(std::wstring(buffer, 7), std::wstring(L"Gr\u00f6\u00dfe\0", 7));
  ASSERT_EQ(WritePrivateProfileStringW(L"R\u00e4kna", L"Gr\u00f6\u00dfe", nullptr, file.c_str()),
            1);
  EXPECT_EQ(ReadWholeFile(path()), "[R\xc3\xa4kna]\n");
}

TEST_F(Profile, RefusesTextThatAnIniFileCantHold) {
  WriteWholeFile(path(), "[s]\nk=v\n");
  const struct {
    const char* section;
    const char* key;
    const char* value;
  } rows[] = {{"s", "k", "two\nlines"}, {"s", "k", "cr\r"},     {"s", "a=b", "v"},
              {"s", "", "v"},           {"s", "  ", "v"},       {"s", "[k", "v"},
              {"s", ";k", "v"},         {"s]", "k", "v"},       {"s\n", "k", "v"},
              {nullptr, "k", "v"},      {nullptr, nullptr, "v"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.section ? row.section : "(null)") + "/" +
                 (row.key ? row.key : "(null)"));
    errno = 0;
    EXPECT_EQ(Write(row.section, row.key, row.value), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(LastProfileError().empty());
  }
  EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", nullptr), 0);
  EXPECT_EQ(ReadWholeFile(path()), "[s]\nk=v\n");
}

TEST_F(Profile, ReportsFilesThatCantBeWritten) {
  const std::string folder = File("folder");
  boost::filesystem::create_directory(folder);
  errno = 0;
  EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", folder.c_str()), 0);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("Is a directory"));
  const std::string nowhere = File("no/such/folder.ini");
  EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", nowhere.c_str()), 0);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("No such file or directory"));
}

TEST_F(Profile, AFailedWriteLeavesFileAndReadsAsTheyWere) {
  ASSERT_EQ(Write("s", "k", "old"), 1);
  EXPECT_EQ(Read("s", "k"), "old");
  zenutl::platform::AtomicFileHooks full;
  full.write = [](int, const void*, size_t) -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  {
    zenutl::platform::ScopedAtomicFileHooks scope(full);
    EXPECT_EQ(Write("s", "k", "new"), 0);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("No space left on device"));
    const std::string other = File("other.ini");
    EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", other.c_str()), 0);
    EXPECT_FALSE(boost::filesystem::exists(other)) << "a failed first write left a file";
  }
  EXPECT_EQ(Read("s", "k"), "old");
  EXPECT_EQ(ReadWholeFile(path()), "[s]\nk=old\n");
  EXPECT_EQ(Write("s", "k", "new"), 1);
  EXPECT_EQ(Read("s", "k"), "new");
}

TEST_F(Profile, FlushForgetsTheCachedFile) {
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1);
  ASSERT_EQ(Write("s", "k", "1"), 1);
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(Read("s", "k"), "1");
}

TEST_F(Profile, NeverServesAStaleCopyAfterAChangeBehindItsBack) {
  ASSERT_EQ(Write("s", "k", "1"), 1);
  EXPECT_EQ(Read("s", "k"), "1");
  // An in-place edit of the same size straight after the read.
  WriteWholeFile(path(), "[s]\nk=2\n");
  EXPECT_EQ(Read("s", "k"), "2");

  // Once the file has settled, an in-place edit that even restores the old size and time.
  std::this_thread::sleep_for(std::chrono::milliseconds(120));
  EXPECT_EQ(Read("s", "k"), "2");
  EXPECT_EQ(Read("s", "k"), "2");
  struct stat before;
  ASSERT_EQ(::stat(path(), &before), 0);
  WriteWholeFile(path(), "[s]\nk=3\n");
  const struct timespec times[2] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, path(), times, 0), 0);
  EXPECT_EQ(Read("s", "k"), "3");

  // Another process's write.
  EXPECT_EQ(Read("s", "k"), "3");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) ::_exit(Write("s", "k", "4") == 1 ? 0 : 1);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(Read("s", "k"), "4");
}

TEST_F(Profile, ConcurrentProcessesWritingDifferentKeysAllKeepTheirKeys) {
  const int kProcesses = 4;
  const int kKeysEach = 40;
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      bool ok = true;
      for (int k = 0; k < kKeysEach; ++k) {
        const std::string key = "p" + std::to_string(p) + "_" + std::to_string(k);
        ok = Write("shared", key.c_str(), std::to_string(k * p).c_str()) == 1 && ok;
        ok = Write(("own" + std::to_string(p)).c_str(), "last", key.c_str()) == 1 && ok;
      }
      ::_exit(ok ? 0 : 1);
    }
    children.push_back(child);
  }
  for (pid_t child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  for (int p = 0; p < kProcesses; ++p) {
    for (int k = 0; k < kKeysEach; ++k) {
      const std::string key = "p" + std::to_string(p) + "_" + std::to_string(k);
      EXPECT_EQ(Read("shared", key.c_str()), std::to_string(k * p)) << key;
    }
    EXPECT_EQ(Read(("own" + std::to_string(p)).c_str(), "last"),
              "p" + std::to_string(p) + "_" + std::to_string(kKeysEach - 1));
  }
  EXPECT_EQ(Keys("shared").size(), static_cast<std::size_t>(kProcesses * kKeysEach));
}

TEST_F(Profile, ConcurrentThreadsWritingDifferentKeysAllKeepTheirKeys) {
  const int kThreads = 4;
  const int kKeysEach = 30;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int k = 0; k < kKeysEach; ++k) {
        const std::string key = "t" + std::to_string(t) + "_" + std::to_string(k);
        EXPECT_EQ(Write("threads", key.c_str(), key.c_str()), 1);
        EXPECT_EQ(Read("threads", key.c_str()), key);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Keys("threads").size(), static_cast<std::size_t>(kThreads * kKeysEach));
}

}  // namespace

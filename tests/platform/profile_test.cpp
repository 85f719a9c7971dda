#include "platform/profile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/file_calls.h"
#include "support/full_disk.h"
#include "support/temp_dir.h"

namespace {

using namespace zenutl::platform;  // NOLINT: the five profile calls and their error text
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class Profile : public zenutl_test::TempDirTest {
 protected:
  Profile() : path_(File("test.ini")) {}
  const char* path() const { return path_.c_str(); }
  // The value, or "?" when absent; with a null key the key names joined by '|'.
  std::string Read(const char* section, const char* key) const {
    char buffer[4096];
    const DWORD n = GetPrivateProfileStringA(section, key, "?", buffer, sizeof(buffer), path());
    std::string text(buffer, n);
    if (key == nullptr) std::replace(text.begin(), text.end(), '\0', '|');
    return text;
  }
  BOOL Write(const char* section, const char* key, const char* value) const {
    return WritePrivateProfileStringA(section, key, value, path());
  }

 private:
  std::string path_;
};

TEST_F(Profile, FollowsTheWindowsFileRules) {
  WriteWholeFile(path(),
                 "orphan=before any section\n[General]\n  Name  =  Value with spaces  \t\n"
                 ";Hidden=2\nno equals sign\nEmpty=\nk=first\nK=second\n"
                 " [ Spaced Section ] trailing\nKey=x=y\n#hash=3\n[general]\nlate=ignored\n");
  const struct {
    const char* section;
    const char* key;
    const char* expected;
  } rows[] = {{"GENERAL", "NAME", "Value with spaces"},
              {" General ", "\tName ", "Value with spaces"},
              {"General", "Hidden", "?"},
              {"General", ";Hidden", "?"},
              {"General", "no equals sign", "?"},
              {"General", "Empty", ""},
              {"General", "k", "first"},
              {"general", "late", "?"},
              {"spaced section", "KEY", "x=y"},
              {"Spaced Section", "#hash", "3"},
              {"", "orphan", "?"},
              {"General", nullptr, "Name|Empty|k|"},
              {nullptr, nullptr, "General|Spaced Section|"},
              {"Missing", nullptr, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.section ? row.section : "(null)") + "/" +
                 (row.key ? row.key : "(null)"));
    EXPECT_EQ(Read(row.section, row.key), row.expected);
  }
}

TEST_F(Profile, RewritesTouchOnlyTheLinesTheyChange) {
  EXPECT_EQ(Write("s", "k", nullptr) + Write("s", nullptr, nullptr), 2);
  EXPECT_FALSE(boost::filesystem::exists(path())) << "a removal created the file";
  const std::string bom = "\xEF\xBB\xBF";
  WriteWholeFile(path(), bom +
                             "; settings\r\n[One]\r\na = 1\r\nK=x\r\nk=y\r\njunk\r\n\r\n"
                             "; the second section\r\n[Two]\r\nc=3");
  ASSERT_EQ(Write("one", "A", "10") + Write("ONE", "new", "n") + Write("two", "d", "4") +
                Write("Three", "e", "5") + Write("three", "E", "6"),
            5);
  EXPECT_EQ(ReadWholeFile(path()), bom +
                                       "; settings\r\n[One]\r\na = 10\r\nK=x\r\nk=y\r\nnew=n\r\n"
                                       "junk\r\n\r\n; the second section\r\n[Two]\r\nc=3\r\nd=4\r\n"
                                       "[Three]\r\ne=6\r\n");
  ASSERT_EQ(Write("One", "k", nullptr) + Write("TWO", nullptr, nullptr), 2);
  EXPECT_EQ(ReadWholeFile(path()), bom +
                                       "; settings\r\n[One]\r\na = 10\r\nnew=n\r\njunk\r\n\r\n"
                                       "; the second section\r\n[Three]\r\ne=6\r\n");
  struct stat before, after;  // writing the value a key already has leaves the file alone
  ASSERT_EQ(::stat(path(), &before), 0);
  ASSERT_EQ(Write("three", "e", "6"), 1);
  ASSERT_EQ(::stat(path(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Profile, AKeyOnALastLineEndingInACarriageReturnKeepsItsValueWhenALineFollows) {
  // Found by fuzzing the engine: the appended line's "\n" used to make the "\r" a line ending.
  WriteWholeFile(path(), "[s]\nk = v\r");
  const std::string before = Read("s", "k");
  ASSERT_EQ(Write("s", "new", "n"), 1);
  // What another program reads of the file, not this process's copy of what it wrote.
  const std::string copy = File("copy.ini");
  WriteWholeFile(copy, ReadWholeFile(path()));
  char value[16];
  const DWORD n = GetPrivateProfileStringA("s", "k", "?", value, sizeof value, copy.c_str());
  EXPECT_EQ(std::string(value, n), before);
  EXPECT_EQ(Read("s", "new"), "n");
}

TEST_F(Profile, FillsBuffersWithTheWindowsTruncationRules) {
  WriteWholeFile(path(), "[s]\nvalue=abcdef\nalpha=1\nbeta=2\n[t]\n");
  const struct {
    const char* section;
    const char* key;
    DWORD size;
    DWORD returned;
    std::string bytes;  // the buffer's start; nothing beyond `size` may change
  } rows[] = {{"s", "value", 7, 6, std::string("abcdef\0", 7)},
              {"s", "value", 6, 5, std::string("abcde\0", 6)},
              {"s", "value", 1, 0, std::string("\0", 1)},
              {"s", "value", 0, 0, "z"},
              {"s", "nope", 5, 4, std::string("defa\0", 5)},  // the default is cut too
              {"s", nullptr, 18, 17, std::string("value\0alpha\0beta\0\0", 18)},
              {"s", nullptr, 17, 15, std::string("value\0alpha\0bet\0\0", 17)},
              {"s", nullptr, 13, 11, std::string("value\0alpha\0\0", 13)},
              {"s", nullptr, 2, 0, std::string("\0\0", 2)},
              {nullptr, nullptr, 5, 4, std::string("s\0t\0\0", 5)},
              {nullptr, nullptr, 4, 2, std::string("s\0\0\0", 4)}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.key ? row.key : "(list)") + " " + std::to_string(row.size));
    std::string buffer(32, 'z');
    EXPECT_EQ(
        GetPrivateProfileStringA(row.section, row.key, "default  ", &buffer[0], row.size, path()),
        row.returned);
    EXPECT_EQ(buffer.substr(0, row.bytes.size()), row.bytes);
    EXPECT_EQ(buffer.substr(row.size), std::string(32 - row.size, 'z'));
  }
  char names[8];
  EXPECT_EQ(GetPrivateProfileSectionNamesA(names, 4, path()), 2u);
}

TEST_F(Profile, RefusesWhatAnIniFileCantHoldAndReportsFailuresWithTheSystemsText) {
  WriteWholeFile(path(), "[s]\nk=v\n");
  const struct {
    const char* section;
    const char* key;
    const char* value;
  } invalid[] = {{"s", "k", "two\nlines"}, {"s", "a=b", "v"}, {"s", "  ", "v"},   {"s", "[k", "v"},
                 {"s", ";k", "v"},         {"s]", "k", "v"},  {nullptr, "k", "v"}};
  for (const auto& row : invalid) {
    SCOPED_TRACE(std::string(row.section ? row.section : "(null)") + "/" + row.key);
    EXPECT_EQ(Write(row.section, row.key, row.value), 0);
    EXPECT_EQ(errno, EINVAL);
  }
  EXPECT_EQ(ReadWholeFile(path()), "[s]\nk=v\n");
  boost::filesystem::create_directory(File("folder"));
  EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", File("folder").c_str()), 0);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("Is a directory"));
}

TEST_F(Profile, AFailedWriteLeavesTheFileAndWhatReadsSee) {
  ASSERT_EQ(Write("s", "k", "old"), 1);
  EXPECT_EQ(Read("s", "k"), "old");
  {
    ScopedFileCalls full(zenutl_test::FullDiskCalls());
    EXPECT_EQ(Write("s", "k", "new"), 0);
    EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("No space left on device"));
    EXPECT_EQ(WritePrivateProfileStringA("s", "k", "v", File("new.ini").c_str()), 0);
  }
  EXPECT_FALSE(boost::filesystem::exists(File("new.ini"))) << "a failed first write left a file";
  EXPECT_EQ(Read("s", "k"), "old");
  EXPECT_EQ(ReadWholeFile(path()), "[s]\nk=old\n");
}

TEST_F(Profile, NeverServesAStaleCopyAfterAChangeBehindItsBack) {
  ASSERT_EQ(Write("s", "k", "1"), 1);
  EXPECT_EQ(Read("s", "k"), "1");
  WriteWholeFile(path(), "[s]\nk=2\n");  // in place, same size, straight after the read
  EXPECT_EQ(Read("s", "k"), "2");
  // Once the file has settled: an in-place edit that even puts the old times back.
  std::this_thread::sleep_for(std::chrono::milliseconds(120));
  EXPECT_EQ(Read("s", "k") + Read("s", "k"), "22");
  struct stat before;
  ASSERT_EQ(::stat(path(), &before), 0);
  WriteWholeFile(path(), "[s]\nk=3\n");
  const struct timespec times[2] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, path(), times, 0), 0);
  EXPECT_EQ(Read("s", "k"), "3");
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1);  // the flush call
  const pid_t child = ::fork();                    // another process's write
  if (child == 0) ::_exit(Write("s", "k", "4") == 1 ? 0 : 1);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(Read("s", "k"), "4");
}

TEST_F(Profile, ConcurrentWritersOfDifferentKeysAllKeepTheirKeys) {
  const int kWriters = 4;  // two processes, each with two threads
  const int kKeysEach = 40;
  const auto writeKeys = [this](int writer) {
    bool ok = true;
    for (int k = 0; k < kKeysEach; ++k) {
      const std::string key = "w" + std::to_string(writer) + "_" + std::to_string(k);
      ok = Write("shared", key.c_str(), std::to_string(k * writer).c_str()) == 1 && ok;
      ok = Write(("own" + std::to_string(writer)).c_str(), "last", key.c_str()) == 1 && ok;
    }
    return ok;
  };
  std::vector<pid_t> children;
  for (int p = 0; p < kWriters / 2; ++p) {
    const pid_t child = ::fork();
    if (child == 0) {
      bool ok = true;
      std::thread second([&] { ok = writeKeys(2 * p + 1) && ok; });
      ok = writeKeys(2 * p) && ok;
      second.join();
      ::_exit(ok ? 0 : 1);
    }
    children.push_back(child);
  }
  for (pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  for (int w = 0; w < kWriters; ++w) {
    for (int k = 0; k < kKeysEach; ++k) {
      const std::string key = "w" + std::to_string(w) + "_" + std::to_string(k);
      EXPECT_EQ(Read("shared", key.c_str()), std::to_string(k * w)) << key;
    }
    EXPECT_EQ(Read(("own" + std::to_string(w)).c_str(), "last"),
              "w" + std::to_string(w) + "_" + std::to_string(kKeysEach - 1));
  }
}

}  // namespace

#include "platform/profile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
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

// Keeps every core busy, as a loaded machine does, while it lives.
struct BusyCpus {
  BusyCpus() {
    for (unsigned i = 0; i < std::max(2u, std::thread::hardware_concurrency()); ++i) {
      const pid_t burner = ::fork();
      for (volatile unsigned spin = 0; burner == 0; spin = spin + 1) {
      }
      if (burner > 0) burners.push_back(burner);
    }
  }
  ~BusyCpus() {
    for (pid_t burner : burners) {
      ::kill(burner, SIGKILL);
      ::waitpid(burner, nullptr, 0);
    }
  }
  std::vector<pid_t> burners;
};

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
  WriteWholeFile(
      path(),
      "orphan=before any section\n[General]\n  Name  =  Value with spaces  \t\n"
      ";Hidden=2\nno equals sign\nEmpty=\nk=first\nK=second\n"
      " [ Spaced Section ] trailing\nKey=x=y\n#hash=3\n[general]\nlate=ignored\n"
      "[Quotes]\nd = \"  two  \" \ntwice=\"\"in\"\"\nodd=\"open'\n[Old Mac]\rcr=1\rcr2=2\r");
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
              {"Quotes", "d", "  two  "},
              {"Quotes", "twice", "\"in\""},
              {"Quotes", "odd", "\"open'"},
              {"Old Mac", nullptr, "cr|cr2|"},
              {nullptr, nullptr, "General|Spaced Section|Quotes|Old Mac|"},
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
  WriteWholeFile(path(), "[s]\rk=1\r[t]\rx=2");  // bare CRs, as old Mac editors wrote
  ASSERT_EQ(Write("s", "n", "v") + Write("t", "x", "3"), 2);
  EXPECT_EQ(ReadWholeFile(path()), "[s]\rk=1\rn=v\r[t]\rx=3");
  struct stat before, after;  // writing the value a key already has leaves the file alone
  ASSERT_EQ(::stat(path(), &before), 0);
  ASSERT_EQ(Write("t", "x", "3"), 1);
  ASSERT_EQ(::stat(path(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Profile, ValuesReadBackAsWrittenWhateverTheirBlanksAndQuotes) {
  const struct {
    const char* value;
    const char* line;  // as it stands in the file
  } rows[] = {{"plain", "k=plain"},     {"say \"hi\"", "k=say \"hi\""},
              {"\"", "k=\""},           {"", "k="},
              {"\"q\"", "k=\"\"q\"\""}, {"'q'", "k=\"'q'\""},
              {" lead", "k=\" lead\""}, {"trail\t", "k=\"trail\t\""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    ASSERT_EQ(Write("s", "k", row.value), 1);
    EXPECT_EQ(Read("s", "k"), row.value);
    EXPECT_EQ(ReadWholeFile(path()), std::string("[s]\n") + row.line + "\n");
  }
}

// UTF-16LE text as its bytes, byte-order mark first.
std::string Utf16Le(const std::u16string& text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

TEST_F(Profile, ReadsUtf16FilesAndKeepsThemUtf16) {
  // A character beyond the 16-bit range (a surrogate pair) and a lone surrogate among the rest.
  WriteWholeFile(path(), Utf16Le(u"[S\u00e4]\r\nk=\u00e5 \U0001F600\r\nlone=\xDC00x\r\n"));
  EXPECT_EQ(Read("S\xC3\xA4", "k"), "\xC3\xA5 \xF0\x9F\x98\x80");
  ASSERT_EQ(Write("S\xC3\xA4", "n", "\xCE\xA9"), 1);
  EXPECT_EQ(ReadWholeFile(path()),
            Utf16Le(u"[S\u00e4]\r\nk=\u00e5 \U0001F600\r\nlone=\xDC00x\r\nn=\u03a9\r\n"));
  EXPECT_EQ(Write("S\xC3\xA4", "bad", "\xFF"), 0) << "text the file can't carry";
  EXPECT_EQ(errno, EILSEQ);
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

TEST_F(Profile, RefusesAnEditThatWouldLeaveTheFileLookingLikeUtf16) {
  // Found by fuzzing: removing the first section moved a stray line starting with the bytes
  // FF FE to the top, and the next read took the whole file for UTF-16.
  const std::string text = "[a]\nk=v\n\xFF\xFEstray\n[b]\nk=v\n";
  WriteWholeFile(path(), text);
  EXPECT_EQ(Write("a", nullptr, nullptr), 0);
  EXPECT_EQ(errno, EILSEQ);
  EXPECT_EQ(ReadWholeFile(path()), text);
  EXPECT_EQ(Read("b", "k"), "v");
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

// Counts the fsyncs that reach the system; fails them while `failing`.
int gSyncs = 0;
bool gFailSyncs = false;
int CountingFsync(int fd) {
  ++gSyncs;
  if (!gFailSyncs) return SystemFileCalls().fsync(fd);
  errno = EIO;
  return -1;
}

TEST_F(Profile, WritesWaitForTheDiskOnlyAtTheFlush) {
  FileCalls calls = SystemFileCalls();
  calls.fsync = &CountingFsync;
  ScopedFileCalls counting(calls);
  gSyncs = 0;
  ASSERT_EQ(Write("s", "a", "1") + Write("s", "b", "2") + Write("s", nullptr, nullptr), 3);
  EXPECT_EQ(gSyncs, 0) << "a write waited for the disk";
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(gSyncs, 2) << "the flush syncs the file and its folder";
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(gSyncs, 2) << "nothing new to sync";
  ASSERT_EQ(Write("s", "c", "3"), 1);
  gFailSyncs = true;
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(errno, EIO);
  EXPECT_THAT(LastProfileError(), ::testing::HasSubstr("Input/output error"));
  gFailSyncs = false;
  EXPECT_EQ(Write(nullptr, nullptr, nullptr), 1) << "a failed flush is tried again";
  EXPECT_EQ(gSyncs, 5);
}

TEST_F(Profile, AProcessKilledWhileWritingLeavesEveryWriteItReported) {
  int reported[2];
  ASSERT_EQ(::pipe(reported), 0);
  const pid_t child = ::fork();
  for (int i = 0; child == 0; ++i) {  // values of many lengths, each acknowledged once written
    if (Write("s", ("k" + std::to_string(i)).c_str(), std::string(i % 97, 'v').c_str()) != 1 ||
        ::write(reported[1], &i, sizeof(i)) != sizeof(i)) {
      ::_exit(1);
    }
  }
  ASSERT_GT(child, 0);
  ::close(reported[1]);
  int last = -1;
  for (int i = 0; i < 150 && ::read(reported[0], &last, sizeof(last)) == sizeof(last); ++i) {
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ::close(reported[0]);
  ASSERT_GE(last, 0);
  for (int i = 0; i <= last; ++i) {
    ASSERT_EQ(Read("s", ("k" + std::to_string(i)).c_str()), std::string(i % 97, 'v')) << i;
  }
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

// Writers in several processes and threads, with the CPU busy. Each adds keys of its own and
// rewrites a value of the same length, so that versions of equal size follow each other quickly
// and freed inode numbers come back for new versions: files that their status can't tell apart.
TEST_F(Profile, ConcurrentWritersOfDifferentKeysAllKeepTheirKeys) {
  const int kProcesses = 3, kThreadsEach = 2, kKeysEach = 25, kRounds = 12;
  const auto key = [](int writer, int k) {
    return std::to_string(writer) + "_" + std::to_string(k + 10);
  };
  const BusyCpus busy;
  for (int round = 0; round < kRounds && !HasFailure(); ++round) {
    ::unlink(path());
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
      children.push_back(::fork());
      if (children.back() != 0) continue;
      std::atomic<int> failures(0);
      std::vector<std::thread> threads;
      for (int writer = p * kThreadsEach; writer < (p + 1) * kThreadsEach; ++writer) {
        threads.emplace_back([&, writer] {
          const std::string own = "own" + std::to_string(writer);
          for (int k = 0; k < kKeysEach; ++k) {
            failures += Write("shared", key(writer, k).c_str(), std::to_string(k).c_str()) != 1;
            failures += Write(own.c_str(), "last", key(writer, k).c_str()) != 1;
            failures += Read(own.c_str(), "last") != key(writer, k);  // no stale copy either
          }
        });
      }
      for (std::thread& thread : threads) thread.join();
      ::_exit(failures == 0 ? 0 : 1);
    }
    for (pid_t child : children) {
      int status = -1;
      ASSERT_EQ(::waitpid(child, &status, 0), child);
      EXPECT_EQ(status, 0) << "round " << round;
    }
    for (int writer = 0; writer < kProcesses * kThreadsEach; ++writer) {
      for (int k = 0; k < kKeysEach; ++k) {
        EXPECT_EQ(Read("shared", key(writer, k).c_str()), std::to_string(k)) << key(writer, k);
      }
      EXPECT_EQ(Read(("own" + std::to_string(writer)).c_str(), "last"), key(writer, kKeysEach - 1));
    }
  }
}

}  // namespace

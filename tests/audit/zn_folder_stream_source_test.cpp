#include "zenutl/zn_folder_stream_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/file_calls.h"
#include "platform/native_path.h"
#include "support/child_process.h"
#include "support/full_disk.h"
#include "support/temp_dir.h"

namespace fs = boost::filesystem;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

namespace {

// Bytes that a text-mode stream or a careless copy would alter.
const char kBinaryBytes[] = "line\r\nnext\0\xff\x1a end";
const std::string kBinary(kBinaryBytes, sizeof kBinaryBytes - 1);

class FolderStreamSourceTest : public zenutl_test::TempDirTest {
 protected:
  // The temporary folder as the applications write paths, with backslashes.
  std::string WindowsDir() const { return zenutl::platform::FromNativePath(Dir().string()); }

  bool Write(ZnStreamSource& source, const char* name, const std::string& content) {
    std::unique_ptr<std::ostream> out(source.OpenOutputStream(name));
    if (!out) return false;
    out->write(content.data(), static_cast<std::streamsize>(content.size()));
    return static_cast<bool>(*out);
  }

  // The content of a stream read through the source, or "<none>" when it can't be opened.
  std::string Read(ZnStreamSource& source, const char* name) {
    std::unique_ptr<std::istream> in(source.OpenInputStream(name));
    if (!in) return "<none>";
    return std::string(std::istreambuf_iterator<char>(*in), std::istreambuf_iterator<char>());
  }

  std::vector<CString> List(const ZnStreamSource& source) {
    std::vector<CString> names;
    EXPECT_TRUE(source.ListStreams(names));
    return names;
  }
};

std::vector<CString> Names(std::initializer_list<const char*> names) {
  return std::vector<CString>(names.begin(), names.end());
}

TEST_F(FolderStreamSourceTest, StoresStreamsAsFilesUnderWindowsFormNames) {
  struct Row {
    const char* name;
    const char* file;  // relative to the folder, Linux form
  };
  const Row rows[] = {
      {"trail.xml", "trail.xml"},
      {"audit\\trail.xml", "audit/trail.xml"},
      {"a/b\\c.bin", "a/b/c.bin"},
      {"Trail.XML", "Trail.XML"},
  };
  const std::string folder = WindowsDir() + "\\store";
  ZnFolderStreamSource source(folder.c_str());
  EXPECT_STREQ(source.GetLocation().GetString(), folder.c_str());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string content = kBinary + row.name;
    ASSERT_TRUE(Write(source, row.name, content));
    EXPECT_EQ(ReadWholeFile(File(std::string("store/") + row.file)), content);
    EXPECT_EQ(Read(source, row.name), content);
    EXPECT_TRUE(source.StreamExists(row.name));
    EXPECT_EQ(source.GetStreamSize(row.name), static_cast<__int64>(content.size()));
  }
  // Names are case-sensitive: "Trail.XML" and "trail.xml" are two streams.
  EXPECT_EQ(List(source), Names({"Trail.XML", "a\\b\\c.bin", "audit\\trail.xml", "trail.xml"}));
  EXPECT_TRUE(source.Flush());
}

TEST_F(FolderStreamSourceTest, RefusesEverythingForBadMissingOrFolderNames) {
  fs::create_directories(Dir() / "inner" / "sub");
  WriteWholeFile(File("outside.txt"), "keep");
  ZnFolderStreamSource source(zenutl::platform::FromNativePath(File("inner")).c_str());
  ASSERT_TRUE(Write(source, "mine.txt", "data"));
  const char* names[] = {nullptr,
                         "",
                         "\\outside.txt",
                         "/etc/hostname",
                         "C:\\outside.txt",
                         "c:outside.txt",
                         "..\\outside.txt",
                         "a\\..\\..\\outside.txt",
                         ".\\x",
                         "a\\\\b",
                         "a\\",
                         "..",
                         ".",
                         "missing.txt",
                         "sub"};
  for (const char* name : names) {
    SCOPED_TRACE(name ? name : "(null)");
    FILETIME untouched = {0x1234, 0x5678};
    EXPECT_FALSE(source.GetStreamTime(name, untouched));
    EXPECT_EQ(untouched.dwLowDateTime, 0x1234u);
    EXPECT_EQ(Read(source, name), "<none>");
    EXPECT_FALSE(source.StreamExists(name));
    EXPECT_EQ(source.GetStreamSize(name), -1);
    EXPECT_FALSE(source.DeleteStream(name));
    EXPECT_FALSE(source.CopyStream(name, "mine.txt"));
    EXPECT_FALSE(source.RenameStream(name, "mine.txt"));
    if (!name || std::string(name) != "missing.txt") {
      EXPECT_FALSE(std::unique_ptr<std::ostream>(source.OpenOutputStream(name)));
      EXPECT_FALSE(std::unique_ptr<std::ostream>(source.OpenAppendStream(name)));
      EXPECT_FALSE(source.CopyStream("mine.txt", name));
      EXPECT_FALSE(source.RenameStream("mine.txt", name));
    }
  }
  EXPECT_EQ(ReadWholeFile(File("outside.txt")), "keep");
  EXPECT_EQ(Read(source, "mine.txt"), "data");
  EXPECT_TRUE(fs::is_directory(Dir() / "inner" / "sub"));
  EXPECT_EQ(List(source), Names({"mine.txt"}));
}

TEST_F(FolderStreamSourceTest, WritesReplaceOrAppendAndDeleteKeepsTheFolder) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "log.txt", "a much longer first version"));
  ASSERT_TRUE(Write(source, "log.txt", "short"));
  for (const char* name : {"log.txt", "sub\\appended.txt"}) {
    std::unique_ptr<std::ostream> out(source.OpenAppendStream(name));
    ASSERT_TRUE(out) << name;
    *out << "+tail";
  }
  EXPECT_EQ(Read(source, "log.txt"), "short+tail");
  EXPECT_EQ(Read(source, "sub\\appended.txt"), "+tail");

  EXPECT_TRUE(source.DeleteStream("sub/appended.txt"));
  EXPECT_FALSE(source.DeleteStream("sub\\appended.txt"));
  EXPECT_EQ(List(source), Names({"log.txt"}));
  EXPECT_TRUE(fs::is_directory(Dir() / "sub"));
}

TEST_F(FolderStreamSourceTest, ReportsLastWriteTimeAsFileTimeTo100Nanoseconds) {
  struct Row {
    time_t seconds;
    long nanoseconds;
    unsigned long long fileTime;
  };
  const Row rows[] = {
      {0, 0, 116444736000000000ULL},                   // 1970-01-01
      {1306843327, 0, 129513169270000000ULL},          // 2011-05-31 12:02:07 UTC
      {1306843327, 123456789, 129513169271234567ULL},  // sub-second part in 100 ns units
      {4102444800, 999999999, 157469184009999999ULL},  // 2100-01-01, past 32-bit seconds
  };
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "timed.bin", "t"));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.seconds);
    const struct timespec times[2] = {{row.seconds, row.nanoseconds},
                                      {row.seconds, row.nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, File("timed.bin").c_str(), times, 0), 0);
    FILETIME written = {0, 0};
    ASSERT_TRUE(source.GetStreamTime("timed.bin", written));
    EXPECT_EQ(
        (static_cast<unsigned long long>(written.dwHighDateTime) << 32) | written.dwLowDateTime,
        row.fileTime);
  }
}

TEST_F(FolderStreamSourceTest, RenameAndCopyReplaceTheTargetAndSpareTheSourceOnItself) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "draft.xml", kBinary));
  ASSERT_TRUE(Write(source, "final.xml", "a longer older version that must vanish completely"));
  EXPECT_TRUE(source.RenameStream("draft.xml", "final.xml"));
  EXPECT_TRUE(source.CopyStream("final.xml", "old\\2011\\backup.xml"));
  EXPECT_TRUE(source.RenameStream("old\\2011\\backup.xml", "old\\backup.xml"));
  ASSERT_TRUE(Write(source, "copy.xml", "a longer older version that must vanish completely"));
  EXPECT_TRUE(source.CopyStream("final.xml", "copy.xml"));
  // Onto itself, also by another spelling of the name: nothing changes, nothing is truncated.
  EXPECT_TRUE(source.CopyStream("final.xml", "final.xml"));
  EXPECT_TRUE(source.CopyStream("old\\backup.xml", "old/backup.xml"));
  EXPECT_TRUE(source.RenameStream("copy.xml", "copy.xml"));
  for (const char* name : {"final.xml", "old\\backup.xml", "copy.xml"}) {
    EXPECT_EQ(Read(source, name), kBinary) << name;
  }
  // No temporary files are left behind.
  EXPECT_EQ(List(source), Names({"copy.xml", "final.xml", "old\\backup.xml"}));
}

TEST_F(FolderStreamSourceTest, ListsAMissingFolderAsEmptyAndAFileAsFailure) {
  std::vector<CString> names = Names({"stale"});
  ZnFolderStreamSource missing(zenutl::platform::FromNativePath(File("not-yet")).c_str());
  EXPECT_TRUE(missing.ListStreams(names));
  EXPECT_TRUE(names.empty());
  EXPECT_TRUE(missing.Flush());
  ASSERT_TRUE(Write(missing, "first.txt", "1"));  // creates the folder
  EXPECT_EQ(ReadWholeFile(File("not-yet/first.txt")), "1");

  WriteWholeFile(File("plain-file"), "x");
  ZnFolderStreamSource onFile(zenutl::platform::FromNativePath(File("plain-file")).c_str());
  names = Names({"stale"});
  EXPECT_FALSE(onFile.ListStreams(names));
  EXPECT_EQ(names, Names({"stale"}));
  EXPECT_FALSE(Write(onFile, "x.txt", "x"));
  EXPECT_EQ(ReadWholeFile(File("plain-file")), "x");
}

TEST_F(FolderStreamSourceTest, ReadOnlyStoreReadsButNeverChangesTheDisk) {
  ZnFolderStreamSource writable(WindowsDir().c_str());
  ASSERT_TRUE(Write(writable, "trail.xml", "sealed"));
  ZnFolderStreamSource source(WindowsDir().c_str(), true);
  ZnFolderStreamSource copy(source);
  for (ZnStreamSource* store :
       {static_cast<ZnStreamSource*>(&source), static_cast<ZnStreamSource*>(&copy)}) {
    EXPECT_TRUE(store->IsReadOnly());
    EXPECT_EQ(Read(*store, "trail.xml"), "sealed");
    EXPECT_FALSE(Write(*store, "trail.xml", "forged"));
    EXPECT_FALSE(std::unique_ptr<std::ostream>(store->OpenAppendStream("new.xml")));
    EXPECT_FALSE(store->DeleteStream("trail.xml"));
    EXPECT_FALSE(store->RenameStream("trail.xml", "moved.xml"));
    EXPECT_FALSE(store->CopyStream("trail.xml", "copy.xml"));
    EXPECT_TRUE(store->Flush());
  }
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "sealed");
  EXPECT_EQ(List(source), Names({"trail.xml"}));
}

}  // namespace

namespace {

TEST_F(FolderStreamSourceTest, OutputStreamReplacesTheFileWholeOnFlush) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "trail.xml", "old content"));
  std::unique_ptr<std::ostream> out(source.OpenOutputStream("trail.xml"));
  ASSERT_TRUE(out);
  *out << "new";
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "old content");  // nothing half-written shows
  out->flush();
  EXPECT_TRUE(out->good());
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "new");
  *out << " and more";
  out.reset();
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "new and more");
}

TEST_F(FolderStreamSourceTest, FailedReplacementKeepsThePreviousFileAndSetsBadbit) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "trail.xml", "precious"));
  std::unique_ptr<std::ostream> out(source.OpenOutputStream("trail.xml"));
  ASSERT_TRUE(out);
  *out << "replacement";
  {
    zenutl::platform::ScopedFileCalls disk(zenutl_test::FullDiskCalls());
    out->flush();
    EXPECT_TRUE(out->bad());
  }
  out.reset();
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "precious");
  EXPECT_EQ(std::distance(fs::directory_iterator(Dir()), fs::directory_iterator()), 1)
      << "a temporary file was left behind";
}

// Writers that die or pause just before their bytes reach the disk.
int KilledBeforeTheFlush(int) {
  return ::raise(SIGKILL);
}
int PausedBeforeTheFlush(int fd) {
  ::raise(SIGSTOP);
  return ::fsync(fd);
}

int FilesIn(const fs::path& folder) {
  return static_cast<int>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

// A writer killed part-way through a save leaves its hidden temporary behind. It is never a
// stream, and the next writer removes it; a temporary whose writer still runs stays.
TEST_F(FolderStreamSourceTest,
       TemporariesOfKilledWritersAreNeverListedAndTheNextWriterRemovesThem) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  WriteWholeFile(File("trail.xml"), "saved");
  // The paused writer first: the killed one's temporary would be its to remove.
  int (*const faults[2])(int) = {&PausedBeforeTheFlush, &KilledBeforeTheFlush};
  pid_t writers[2];
  for (int i = 0; i < 2; ++i) {
    writers[i] = zenutl_test::StartChild([&] {
      zenutl::platform::FileCalls calls = zenutl::platform::SystemFileCalls();
      calls.fsync = faults[i];
      zenutl::platform::ScopedFileCalls scope(calls);
      Write(source, "trail.xml", "lost");
    });
    ASSERT_GT(writers[i], 0);
    const int status = zenutl_test::WaitForChild(writers[i], true);
    EXPECT_TRUE(i == 0 ? WIFSTOPPED(status) : WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  }
  EXPECT_EQ(FilesIn(Dir()), 3);
  EXPECT_EQ(List(source), Names({"trail.xml"}));

  EXPECT_TRUE(Write(source, "trail.xml", "next"));
  EXPECT_EQ(FilesIn(Dir()), 2) << "the paused writer's temporary must stay";
  ::kill(writers[0], SIGKILL);
  zenutl_test::WaitForChild(writers[0]);
  EXPECT_TRUE(source.CopyStream("trail.xml", "copy.xml"));
  EXPECT_TRUE(Write(source, "trail.xml", "last"));
  EXPECT_EQ(FilesIn(Dir()), 2);
  EXPECT_EQ(List(source), Names({"copy.xml", "trail.xml"}));
  EXPECT_EQ(ReadWholeFile(File("trail.xml")), "last");
}

}  // namespace

#include "zenutl/zn_folder_stream_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/native_path.h"
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
  ZnFolderStreamSource source(WindowsDir().c_str());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string content = kBinary + row.name;
    ASSERT_TRUE(Write(source, row.name, content));
    EXPECT_EQ(ReadWholeFile(File(row.file)), content);
    EXPECT_EQ(Read(source, row.name), content);
    EXPECT_TRUE(source.StreamExists(row.name));
    EXPECT_EQ(source.GetStreamSize(row.name), static_cast<__int64>(content.size()));
  }
  // Names are case-sensitive: "Trail.XML" and "trail.xml" are two streams.
  EXPECT_EQ(List(source), Names({"Trail.XML", "a\\b\\c.bin", "audit\\trail.xml", "trail.xml"}));
}

TEST_F(FolderStreamSourceTest, RefusesNamesThatLeaveTheFolderOrAreEmpty) {
  fs::create_directories(Dir() / "inner");
  WriteWholeFile(File("outside.txt"), "keep");
  ZnFolderStreamSource source(zenutl::platform::FromNativePath(File("inner")).c_str());
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
                         "."};
  for (const char* name : names) {
    SCOPED_TRACE(name ? name : "(null)");
    std::unique_ptr<std::ostream> out(source.OpenOutputStream(name));
    EXPECT_FALSE(out);
    std::unique_ptr<std::ostream> append(source.OpenAppendStream(name));
    EXPECT_FALSE(append);
    std::unique_ptr<std::istream> in(source.OpenInputStream(name));
    EXPECT_FALSE(in);
    EXPECT_FALSE(source.StreamExists(name));
    EXPECT_EQ(source.GetStreamSize(name), -1);
    EXPECT_FALSE(source.DeleteStream(name));
    EXPECT_FALSE(source.CopyStream(name, "copy.txt"));
    EXPECT_FALSE(source.RenameStream(name, "moved.txt"));
  }
  EXPECT_EQ(ReadWholeFile(File("outside.txt")), "keep");
  EXPECT_EQ(List(source), Names({}));

  // A valid stream can't be copied or moved out of the folder either.
  ASSERT_TRUE(Write(source, "mine.txt", "data"));
  EXPECT_FALSE(source.CopyStream("mine.txt", "..\\outside.txt"));
  EXPECT_FALSE(source.RenameStream("mine.txt", "..\\outside.txt"));
  EXPECT_EQ(ReadWholeFile(File("outside.txt")), "keep");
  EXPECT_EQ(Read(source, "mine.txt"), "data");
}

TEST_F(FolderStreamSourceTest, OutputReplacesFromTheStartAndAppendWritesBehind) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "log.txt", "a much longer first version"));
  ASSERT_TRUE(Write(source, "log.txt", "short"));
  EXPECT_EQ(Read(source, "log.txt"), "short");

  for (const char* name : {"log.txt", "new\\appended.txt"}) {
    std::unique_ptr<std::ostream> out(source.OpenAppendStream(name));
    ASSERT_TRUE(out) << name;
    *out << "+tail";
  }
  EXPECT_EQ(Read(source, "log.txt"), "short+tail");
  EXPECT_EQ(Read(source, "new\\appended.txt"), "+tail");
}

TEST_F(FolderStreamSourceTest, AnswersMissingStreamsWithoutChangingAnything) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "present.txt", "here"));
  FILETIME untouched = {0x1234, 0x5678};
  EXPECT_FALSE(source.GetStreamTime("missing.txt", untouched));
  EXPECT_EQ(untouched.dwLowDateTime, 0x1234u);
  EXPECT_EQ(untouched.dwHighDateTime, 0x5678u);
  EXPECT_EQ(Read(source, "missing.txt"), "<none>");
  EXPECT_FALSE(source.StreamExists("missing.txt"));
  EXPECT_EQ(source.GetStreamSize("missing.txt"), -1);
  EXPECT_FALSE(source.DeleteStream("missing.txt"));
  EXPECT_FALSE(source.RenameStream("missing.txt", "present.txt"));
  EXPECT_FALSE(source.CopyStream("missing.txt", "present.txt"));
  EXPECT_EQ(Read(source, "present.txt"), "here");
  EXPECT_EQ(List(source), Names({"present.txt"}));
}

TEST_F(FolderStreamSourceTest, NeverTreatsAFolderAsAStream) {
  fs::create_directories(Dir() / "sub" / "deeper");
  WriteWholeFile(File("sub/deeper/inside.txt"), "x");
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "file.txt", "f"));
  EXPECT_FALSE(source.StreamExists("sub"));
  EXPECT_EQ(Read(source, "sub"), "<none>");
  EXPECT_EQ(source.GetStreamSize("sub"), -1);
  EXPECT_FALSE(source.DeleteStream("sub"));
  std::unique_ptr<std::ostream> out(source.OpenOutputStream("sub"));
  EXPECT_FALSE(out);
  EXPECT_FALSE(source.CopyStream("file.txt", "sub"));
  EXPECT_FALSE(source.RenameStream("file.txt", "sub"));
  EXPECT_FALSE(source.RenameStream("sub", "moved"));
  EXPECT_TRUE(fs::is_directory(Dir() / "sub"));
  EXPECT_EQ(List(source), Names({"file.txt", "sub\\deeper\\inside.txt"}));
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
    const unsigned long long ticks =
        (static_cast<unsigned long long>(written.dwHighDateTime) << 32) | written.dwLowDateTime;
    EXPECT_EQ(ticks, row.fileTime);
  }
}

TEST_F(FolderStreamSourceTest, RenameReplacesTheTargetAndCreatesItsFolders) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "draft.xml", kBinary));
  ASSERT_TRUE(Write(source, "final.xml", "old"));
  EXPECT_TRUE(source.RenameStream("draft.xml", "final.xml"));
  EXPECT_EQ(Read(source, "final.xml"), kBinary);
  EXPECT_FALSE(source.StreamExists("draft.xml"));

  EXPECT_TRUE(source.RenameStream("final.xml", "archive\\2011\\final.xml"));
  EXPECT_EQ(ReadWholeFile(File("archive/2011/final.xml")), kBinary);

  // Renaming onto itself, also by another spelling of the name, keeps the stream.
  EXPECT_TRUE(source.RenameStream("archive\\2011\\final.xml", "archive/2011/final.xml"));
  EXPECT_EQ(Read(source, "archive\\2011\\final.xml"), kBinary);
  EXPECT_EQ(List(source), Names({"archive\\2011\\final.xml"}));
}

TEST_F(FolderStreamSourceTest, CopyReplacesTheTargetWholeAndLeavesNoTemporaryFiles) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "trail.xml", kBinary));
  ASSERT_TRUE(Write(source, "backup.xml", "a longer older backup that must vanish completely"));
  EXPECT_TRUE(source.CopyStream("trail.xml", "backup.xml"));
  EXPECT_TRUE(source.CopyStream("trail.xml", "old\\trail.xml"));
  EXPECT_EQ(Read(source, "backup.xml"), kBinary);
  EXPECT_EQ(Read(source, "old\\trail.xml"), kBinary);
  EXPECT_EQ(Read(source, "trail.xml"), kBinary);

  // Copying a stream onto itself must not truncate it.
  EXPECT_TRUE(source.CopyStream("trail.xml", "trail.xml"));
  EXPECT_TRUE(source.CopyStream("old\\trail.xml", "old/trail.xml"));
  EXPECT_EQ(Read(source, "trail.xml"), kBinary);
  EXPECT_EQ(Read(source, "old\\trail.xml"), kBinary);
  EXPECT_EQ(List(source), Names({"backup.xml", "old\\trail.xml", "trail.xml"}));
}

TEST_F(FolderStreamSourceTest, ListsAMissingFolderAsEmptyAndAFileAsFailure) {
  std::vector<CString> names = Names({"stale"});
  ZnFolderStreamSource missing(zenutl::platform::FromNativePath(File("not-yet")).c_str());
  EXPECT_TRUE(missing.ListStreams(names));
  EXPECT_TRUE(names.empty());
  EXPECT_TRUE(missing.Flush());

  // Writing creates the folder on demand.
  ASSERT_TRUE(Write(missing, "first.txt", "1"));
  EXPECT_EQ(ReadWholeFile(File("not-yet/first.txt")), "1");

  WriteWholeFile(File("plain-file"), "x");
  ZnFolderStreamSource onFile(zenutl::platform::FromNativePath(File("plain-file")).c_str());
  names = Names({"stale"});
  EXPECT_FALSE(onFile.ListStreams(names));
  EXPECT_EQ(names, Names({"stale"}));
  std::unique_ptr<std::ostream> out(onFile.OpenOutputStream("x.txt"));
  EXPECT_FALSE(out);
  EXPECT_EQ(ReadWholeFile(File("plain-file")), "x");
}

TEST_F(FolderStreamSourceTest, ReadOnlyStoreReadsButNeverChangesTheDisk) {
  {
    ZnFolderStreamSource writable(WindowsDir().c_str());
    ASSERT_TRUE(Write(writable, "trail.xml", "sealed"));
    EXPECT_FALSE(writable.IsReadOnly());
  }
  ZnFolderStreamSource source(WindowsDir().c_str(), true);
  EXPECT_TRUE(source.IsReadOnly());
  EXPECT_EQ(Read(source, "trail.xml"), "sealed");

  const std::vector<std::pair<const char*, std::function<bool()>>> changes = {
      {"OpenOutputStream",
       [&] {
         return std::unique_ptr<std::ostream>(source.OpenOutputStream("trail.xml")) != nullptr;
       }},
      {"OpenAppendStream",
       [&] {
         return std::unique_ptr<std::ostream>(source.OpenAppendStream("new.xml")) != nullptr;
       }},
      {"DeleteStream", [&] { return source.DeleteStream("trail.xml"); }},
      {"RenameStream", [&] { return source.RenameStream("trail.xml", "moved.xml"); }},
      {"CopyStream", [&] { return source.CopyStream("trail.xml", "copy.xml"); }},
  };
  for (const auto& change : changes) {
    SCOPED_TRACE(change.first);
    EXPECT_FALSE(change.second());
    EXPECT_EQ(ReadWholeFile(File("trail.xml")), "sealed");
    EXPECT_EQ(List(source), Names({"trail.xml"}));
  }
  EXPECT_TRUE(source.Flush());
}

TEST_F(FolderStreamSourceTest, DeletesOnlyTheNamedStreamAndKeepsItsFolder) {
  ZnFolderStreamSource source(WindowsDir().c_str());
  ASSERT_TRUE(Write(source, "sub\\a.txt", "a"));
  ASSERT_TRUE(Write(source, "sub\\b.txt", "b"));
  EXPECT_TRUE(source.DeleteStream("sub\\a.txt"));
  EXPECT_FALSE(source.DeleteStream("sub\\a.txt"));
  EXPECT_EQ(List(source), Names({"sub\\b.txt"}));
  EXPECT_TRUE(source.DeleteStream("sub/b.txt"));
  EXPECT_EQ(List(source), Names({}));
  EXPECT_TRUE(fs::is_directory(Dir() / "sub"));
}

TEST_F(FolderStreamSourceTest, KeepsTheFolderAsGivenAndFlushesWhatWasWritten) {
  const std::string folder = WindowsDir() + "\\store";
  ZnFolderStreamSource source(folder.c_str());
  EXPECT_STREQ(source.GetLocation().GetString(), folder.c_str());
  ASSERT_TRUE(Write(source, "x.bin", kBinary));
  EXPECT_TRUE(source.Flush());
  EXPECT_EQ(ReadWholeFile(File("store/x.bin")), kBinary);

  // Copies of a store work on the same folder.
  ZnFolderStreamSource copy(source);
  EXPECT_EQ(Read(copy, "x.bin"), kBinary);
  EXPECT_STREQ(copy.GetLocation().GetString(), folder.c_str());
}

}  // namespace

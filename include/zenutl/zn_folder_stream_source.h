// ZnFolderStreamSource: a ZnStreamSource whose streams are the files under one folder.
//
// The name of a stream is its path relative to the folder, with `\` (or `/`) between
// sub-folders: in the folder "D:\\Projects\\P7" the stream "audit\\trail.xml" is the file
// "D:\\Projects\\P7\\audit\\trail.xml". Writing a stream creates the folder and any sub-folders
// it needs; folders themselves are never streams, and deleting the last stream of a sub-folder
// leaves the sub-folder. Names are case-sensitive, as the files are.
//
// A name must stay inside the folder. These are refused like a missing stream (null or false):
//   null, ""                        => refused
//   "\\trail.xml", "/trail.xml"     => refused (absolute)
//   "C:\\trail.xml", "C:trail.xml"  => refused (a drive)
//   "a\\..\\trail.xml", ".\\x"      => refused (a "." or ".." component)
//   "a\\\\b", "a\\"                 => refused (an empty component)
//   "a\\b.xml", "a/b.xml"           => the file b.xml in the sub-folder a
//
// Error contract as for every ZnStreamSource: nothing throws; failures answer null, false or -1.
// Streams are opened in binary mode. A stream from `OpenOutputStream` gathers its text and
// replaces the file as a whole (temporary file, then rename) when it is flushed or deleted, so
// readers never see half of it and a failed write leaves the previous file whole; the failure
// shows as badbit after the flush, which the caller checks before deleting the stream. Append
// streams write to the file directly. The hidden temporaries of such replacements
// (".<name>.tmp.<pid>.<n>.<attempt>") are never streams: `ListStreams` skips them, and one that
// a killed writer left behind is removed by the next write beside it.
#ifndef ZENUTL_ZN_FOLDER_STREAM_SOURCE_H_
#define ZENUTL_ZN_FOLDER_STREAM_SOURCE_H_

#include "zenutl/cstring.h"
#include "zenutl/zn_stream_source.h"

class ZnFolderStreamSource : public ZnStreamSource {
 public:
  // `folder` is a Windows-form path; null or "" is the current working folder. The folder
  // need not exist yet. A read-only store never changes anything on disk.
  explicit ZnFolderStreamSource(const char* folder, bool readOnly = false);
  ~ZnFolderStreamSource() override;

  bool DeleteStream(const char* name) override;
  bool StreamExists(const char* name) const override;
  std::istream* OpenInputStream(const char* name) override;
  __int64 GetStreamSize(const char* name) const override;
  bool GetStreamTime(const char* name, FILETIME& lastWritten) const override;
  bool RenameStream(const char* oldName, const char* newName) override;
  bool CopyStream(const char* sourceName, const char* targetName) override;
  bool ListStreams(std::vector<CString>& names) const override;
  std::ostream* OpenOutputStream(const char* name) override;
  std::ostream* OpenAppendStream(const char* name) override;
  bool IsReadOnly() const override { return mReadOnly; }
  // The folder as it was given.
  CString GetLocation() const override { return mFolder; }
  // Syncs the file system that holds the folder; true when there is no folder yet.
  bool Flush() override;

 private:
  // The file of a stream in Linux form, or "" when the name is refused.
  std::string NativePathOf(const char* name) const;
  std::ostream* OpenWriting(const char* name, bool append);

  CString mFolder;
  bool mReadOnly;
};

#endif  // ZENUTL_ZN_FOLDER_STREAM_SOURCE_H_

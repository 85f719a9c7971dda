// ZnStreamSource: a store of named byte streams, for data kept somewhere other than a plain file.
//
// An application hands a stream source to an audit trail (or to its own code) so that what would
// be a file lives wherever the application keeps its documents: inside a project container, a
// database, a folder of its choosing. A store maps names to streams of bytes. Names are relative
// Windows-form paths ("trail.xml", "2011\\trail.xml"); what a name means beyond that is the
// store's business. `ZnFolderStreamSource` (zn_folder_stream_source.h) is the store on a folder
// of plain files.
//
// Error contract: no operation throws. Opening answers a new stream that the caller owns and
// deletes, or null when the stream isn't available; the other operations answer `false` (or -1
// for a size) when they could not do what was asked, and then leave the store as it was.
// A store that `IsReadOnly` refuses every operation that would change it.
//
// The audit trail uses only `DeleteStream`, `OpenInputStream` and `OpenOutputStream`.
#ifndef ZENUTL_ZN_STREAM_SOURCE_H_
#define ZENUTL_ZN_STREAM_SOURCE_H_

#include <istream>
#include <ostream>
#include <vector>

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

class ZnStreamSource {
 public:
  ZnStreamSource() {}
  ZnStreamSource(const ZnStreamSource&) {}
  ZnStreamSource& operator=(const ZnStreamSource&) { return *this; }
  virtual ~ZnStreamSource();

  // Removes the stream. False when there was none or it could not be removed.
  virtual bool DeleteStream(const char* name) = 0;

  // True when a stream of that name is stored.
  virtual bool StreamExists(const char* name) const = 0;

  // The stream for reading from its start, or null when it doesn't exist or can't be read.
  virtual std::istream* OpenInputStream(const char* name) = 0;

  // The size in bytes, or -1 when there is no such stream.
  virtual __int64 GetStreamSize(const char* name) const = 0;

  // When the stream was last written, as a UTC FILETIME. False (and `lastWritten` untouched)
  // when there is no such stream.
  virtual bool GetStreamTime(const char* name, FILETIME& lastWritten) const = 0;

  // Gives the stream `oldName` the name `newName`, replacing a stream that had that name.
  // Renaming a stream to its own name succeeds and changes nothing.
  virtual bool RenameStream(const char* oldName, const char* newName) = 0;

  // Stores a copy of `sourceName` under `targetName`, replacing a stream that had that name.
  // The target is replaced as a whole or not at all; copying a stream onto itself succeeds and
  // changes nothing.
  virtual bool CopyStream(const char* sourceName, const char* targetName) = 0;

  // Replaces `names` with the names of all stored streams in ascending byte order. False, with
  // `names` untouched, when the store could not be read completely.
  virtual bool ListStreams(std::vector<CString>& names) const = 0;

  // A new, empty stream for writing; an existing stream of that name is replaced from the
  // start. Null when it can't be created.
  virtual std::ostream* OpenOutputStream(const char* name) = 0;

  // A stream that writes behind the existing content, creating the stream when it is missing.
  virtual std::ostream* OpenAppendStream(const char* name) = 0;

  // True when the store refuses deleting, renaming, copying and opening for writing.
  virtual bool IsReadOnly() const = 0;

  // Where the streams are kept, as text for messages and logs.
  virtual CString GetLocation() const = 0;

  // Makes everything written through streams already deleted durable. False when the store
  // could not confirm it.
  virtual bool Flush() = 0;
};

#endif  // ZENUTL_ZN_STREAM_SOURCE_H_

// CException and its file and archive members: what CFile (cfile.h) and CArchive (carchive.h)
// throw, with the framework's causes.
//
// These are not members of the library's own `Exception` family (exception.h): code that
// catches `Exception` does not catch them, which is what the stream classes rely on when they
// let a failure of the archive layer pass. They are thrown by value; catch them by reference.
//
// Error contract: nothing here throws except std::bad_alloc.
#ifndef ZENUTL_CEXCEPTION_H_
#define ZENUTL_CEXCEPTION_H_

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

class CException {
 public:
  virtual ~CException();
  // Copies the description into `text`, cut to `maxText` - 1 characters and terminated. False,
  // with `text` empty, when there is nothing to say. `helpContext`, if given, is set to 0.
  virtual BOOL GetErrorMessage(char* text, UINT maxText, UINT* helpContext = nullptr) const;

 protected:
  CException() = default;
  CException(const CException&) = default;
  CException& operator=(const CException&) = default;
  // The description GetErrorMessage copies out.
  virtual CString Describe() const = 0;
};

// A file operation the system refused.
class CFileException : public CException {
 public:
  enum {
    none,
    genericException,
    fileNotFound,
    badPath,
    tooManyOpenFiles,
    accessDenied,
    invalidFile,
    removeCurrentDir,
    directoryFull,
    badSeek,
    hardIO,
    sharingViolation,
    lockViolation,
    diskFull,
    endOfFile
  };

  explicit CFileException(int cause = none, LONG osError = -1, const char* fileName = nullptr)
      : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

  int m_cause;
  LONG m_lOsError;  // the errno value, or -1
  CString m_strFileName;

 protected:
  // The system's text for the error ("No space left on device") and the file's name.
  CString Describe() const override;
};

// A misuse of an archive: reading one that stores, writing one that loads, using a closed one.
class CArchiveException : public CException {
 public:
  enum { none, genericException, readOnly, endOfFile, writeOnly, badIndex, badClass, badSchema };

  explicit CArchiveException(int cause = none, const char* fileName = nullptr)
      : m_cause(cause), m_strFileName(fileName) {}

  int m_cause;
  CString m_strFileName;

 protected:
  CString Describe() const override;
};

#endif  // ZENUTL_CEXCEPTION_H_

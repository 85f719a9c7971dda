// Runs stream code on both kinds of stream the reader and writer accept: a std::stringstream
// and an archive over a real file.
#ifndef ZENUTL_TESTS_STREAM_STREAM_TEST_SUPPORT_H_
#define ZENUTL_TESTS_STREAM_STREAM_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

#include "support/temp_dir.h"
#include "zenutl/carchive.h"
#include "zenutl/stream_reader.h"
#include "zenutl/stream_writer.h"

namespace zenutl_test {

typedef std::function<void(StreamWriter&)> WriteSteps;
typedef std::function<void(StreamReader&)> ReadSteps;

// The bytes that `write` puts on a std::ostringstream.
inline std::string WrittenToStream(const WriteSteps& write) {
  std::ostringstream stream;
  StreamWriter writer(stream);
  write(writer);
  return stream.str();
}

// The bytes that `write` puts in the file `path` through an archive.
inline std::string WrittenToArchive(const std::string& path, const WriteSteps& write) {
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive archive(&file, CArchive::store);
    StreamWriter writer(archive);
    write(writer);
    archive.Close();
  }
  return ReadWholeFile(path);
}

// Runs `read` on `bytes` held by a std::istringstream.
inline void ReadFromStream(const std::string& bytes, const ReadSteps& read) {
  std::istringstream stream(bytes);
  StreamReader reader(stream);
  read(reader);
}

// Runs `read` on `bytes` in the file `path`, through an archive.
inline void ReadFromArchive(const std::string& path, const std::string& bytes,
                            const ReadSteps& read) {
  WriteWholeFile(path, bytes);
  CFile file(path.c_str(), CFile::modeRead);
  CArchive archive(&file, CArchive::load);
  StreamReader reader(archive);
  read(reader);
}

// Runs `read` on `bytes` held by a std::istringstream, then through an archive on `path`.
inline void ReadFromBoth(const std::string& path, const std::string& bytes, const ReadSteps& read) {
  {
    SCOPED_TRACE("std::istream");
    ReadFromStream(bytes, read);
  }
  SCOPED_TRACE("CArchive");
  ReadFromArchive(path, bytes, read);
}

// The m_cause of the `Thrown` (CFileException, CArchiveException) that `operation` throws, or
// -1 if it throws none.
template <typename Thrown, typename Operation>
int CauseThrownBy(Operation operation) {
  try {
    operation();
  } catch (const Thrown& e) {
    return e.m_cause;
  }
  return -1;
}

// Byte strings written as lists of byte values.
inline std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (int value : values) bytes += static_cast<char>(value);
  return bytes;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_STREAM_STREAM_TEST_SUPPORT_H_

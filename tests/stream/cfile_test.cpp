#include "zenutl/cfile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "stream/stream_test_support.h"
#include "support/full_disk.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::CauseThrownBy;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class CFileTest : public zenutl_test::TempDirTest {};

std::string ErrorText(const CException& error) {
  char text[256];
  error.GetErrorMessage(text, sizeof text);
  return text;
}

TEST_F(CFileTest, ReadsWritesAndMovesOnARealFile) {
  const std::string path = File("data.bin");
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Write("hello world", 11);
    EXPECT_EQ(file.GetPosition(), 11u);
    EXPECT_EQ(file.Seek(6, CFile::begin), 6u);
    file.Write("WORLD", 5);
    EXPECT_EQ(file.Seek(2, CFile::end), 13u);  // past the end is allowed, as on Windows
    file.Write("!", 1);
    EXPECT_EQ(file.GetLength(), 14u);
    file.Flush();
  }
  EXPECT_EQ(ReadWholeFile(path), std::string("hello WORLD\0\0!", 14));

  CFile file(path.c_str(), CFile::modeRead | CFile::shareDenyWrite);
  char buffer[32] = {};
  EXPECT_EQ(file.Read(buffer, 5), 5u);
  EXPECT_EQ(std::string(buffer, 5), "hello");
  EXPECT_EQ(file.Seek(-3, CFile::current), 2u);
  EXPECT_EQ(file.Read(buffer, sizeof buffer), 12u);  // fewer only at the end
  EXPECT_EQ(file.Read(buffer, sizeof buffer), 0u);
  EXPECT_EQ(file.GetFilePath(), path.c_str());
}

TEST_F(CFileTest, CreateEmptiesAFileUnlessToldNotTo) {
  const std::string path = File("kept.bin");
  WriteWholeFile(path, "abcdef");
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite);
    EXPECT_EQ(file.GetLength(), 6u);
    file.Write("X", 1);
  }
  EXPECT_EQ(ReadWholeFile(path), "Xbcdef");
  CFile(path.c_str(), CFile::modeCreate | CFile::modeWrite).Close();
  EXPECT_EQ(ReadWholeFile(path), "");
}

TEST_F(CFileTest, FailuresCarryTheFrameworkCauseAndTheSystemsText) {
  CFileException error;
  CFile file;
  EXPECT_FALSE(file.Open(File("missing.bin").c_str(), CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  EXPECT_EQ(ErrorText(error), "No such file or directory: " + File("missing.bin"));
  EXPECT_FALSE(file.Open(Dir().string().c_str(), CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::accessDenied);
  EXPECT_EQ(
      CauseThrownBy<CFileException>([&] { CFile(File("missing.bin").c_str(), CFile::modeRead); }),
      CFileException::fileNotFound);

  const std::string path = File("written.bin");
  CFile writeOnly(path.c_str(), CFile::modeCreate | CFile::modeWrite);
  char byte;
  EXPECT_EQ(CauseThrownBy<CFileException>([&] { writeOnly.Read(&byte, 1); }),
            CFileException::accessDenied);
  EXPECT_EQ(CauseThrownBy<CFileException>([&] { writeOnly.Seek(-1, CFile::begin); }),
            CFileException::badSeek);
  {
    zenutl::platform::ScopedFileCalls full(zenutl_test::FullDiskCalls());
    try {
      writeOnly.Write("x", 1);
      ADD_FAILURE() << "no exception";
    } catch (const CFileException& e) {
      EXPECT_EQ(e.m_cause, CFileException::diskFull);
      EXPECT_EQ(ErrorText(e), "No space left on device: " + path);
    }
  }
  writeOnly.Close();
  EXPECT_EQ(CauseThrownBy<CFileException>([&] { writeOnly.GetPosition(); }),
            CFileException::invalidFile);
}

}  // namespace

#include "zenutl/carchive.h"

#include <gtest/gtest.h>

#include <string>

#include "stream/stream_test_support.h"
#include "support/temp_dir.h"

namespace {

using zenutl_test::CauseThrownBy;
using zenutl_test::ReadWholeFile;
using zenutl_test::WriteWholeFile;

class CArchiveTest : public zenutl_test::TempDirTest {};

std::string Pattern(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + size);
  return bytes;
}

TEST_F(CArchiveTest, TransfersOfEverySizeAroundTheBufferArriveWholeAndInOrder) {
  const std::string path = File("pieces.bin");
  const std::size_t writes[] = {1, 100, 200, 3, 127, 128, 500, 7, 0, 129};
  std::string expected;
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive archive(&file, CArchive::store, 16);  // raised to 128
    for (std::size_t size : writes) {
      const std::string piece = Pattern(size);
      archive.Write(piece.data(), static_cast<UINT>(size));
      expected += piece;
    }
  }  // the destructor writes out the rest
  ASSERT_EQ(ReadWholeFile(path), expected);

  CFile file(path.c_str(), CFile::modeRead);
  CArchive archive(&file, CArchive::load, 128);
  const std::size_t reads[] = {5, 300, 1, 126, 128, 0, 129, 2};
  std::string got;
  for (std::size_t size : reads) {
    std::string piece(size, '\0');
    ASSERT_EQ(archive.Read(&piece[0], static_cast<UINT>(size)), size);
    got += piece;
  }
  std::string rest(expected.size(), '\0');
  EXPECT_EQ(archive.Read(&rest[0], static_cast<UINT>(rest.size())), expected.size() - got.size());
  got += rest.substr(0, expected.size() - got.size());
  EXPECT_EQ(got, expected);
}

TEST_F(CArchiveTest, FlushBringsTheFilePositionToTheArchives) {
  const std::string path = File("flush.bin");
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive archive(&file, CArchive::store);
    archive.Write("0123456789", 10);
    EXPECT_EQ(file.GetLength(), 0u);
    archive.Flush();
    EXPECT_EQ(file.GetPosition(), 10u);
    EXPECT_EQ(ReadWholeFile(path), "0123456789");
  }
  CFile file(path.c_str(), CFile::modeRead);
  CArchive archive(&file, CArchive::load);
  char bytes[4];
  ASSERT_EQ(archive.Read(bytes, 3), 3u);
  EXPECT_EQ(file.GetPosition(), 10u);  // the archive buffered the whole file
  archive.Flush();
  EXPECT_EQ(file.GetPosition(), 3u);
  file.Seek(8, CFile::begin);
  ASSERT_EQ(archive.Read(bytes, 4), 2u);
  EXPECT_EQ(std::string(bytes, 2), "89");
}

TEST_F(CArchiveTest, RefusesTheWrongDirectionAndUseAfterClose) {
  const std::string path = File("modes.bin");
  WriteWholeFile(path, "abc");
  CFile file(path.c_str(), CFile::modeReadWrite);
  char byte;
  CArchive storing(&file, CArchive::store);
  EXPECT_TRUE(storing.IsStoring());
  EXPECT_FALSE(storing.IsLoading());
  EXPECT_EQ(CauseThrownBy<CArchiveException>([&] { storing.Read(&byte, 1); }),
            CArchiveException::writeOnly);
  storing.Close();
  EXPECT_EQ(storing.GetFile(), nullptr);
  EXPECT_EQ(CauseThrownBy<CArchiveException>([&] { storing.Write("x", 1); }),
            CArchiveException::genericException);

  CArchive loading(&file, CArchive::load);
  EXPECT_TRUE(loading.IsLoading());
  EXPECT_EQ(CauseThrownBy<CArchiveException>([&] { loading.Write("x", 1); }),
            CArchiveException::readOnly);
}

}  // namespace

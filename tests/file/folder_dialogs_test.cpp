// ValidateFolder and BrowseForFolder, with a recording host and real folders.
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cstring>
#include <string>
#include <vector>

#include "file/folder_selection.h"
#include "platform/native_path.h"
#include "support/temp_dir.h"
#include "zenutl/host_dialogs.h"
#include "zenutl/language_string.h"
#include "zenutl/path_functions.h"
#include "zenutl/zn_string.h"

namespace {

namespace fs = boost::filesystem;
namespace platform = zenutl::platform;
using namespace ZnHostDialogs;
using platform::FromNativePath;

CString Text(unsigned int id, const std::string& argument = "") {
  return ZnString::Format(static_cast<unsigned long>(id), argument.c_str());
}

class FolderDialogsTest : public zenutl_test::TempDirTest {
 protected:
  // Records the boxes, answering the question with `answer`, and the browse requests.
  void Install(int answer, bool picks = false, const std::string& pick = "") {
    mBoxes.reset();  // the previous handlers go first, so that the defaults come back between
    mBrowser.reset();
    boxes.clear();
    requests.clear();
    mBoxes.reset(new ScopedMessageBoxHandler([this, answer](const MessageBoxRequest& request) {
      boxes.push_back(request);
      return answer;
    }));
    mBrowser.reset(new ScopedBrowseForFolderHandler(
        [this, picks, pick](const BrowseForFolderRequest& request, CString& chosen) {
          requests.push_back(request);
          if (picks) chosen = CString(pick);
          return picks;
        }));
  }
  std::vector<MessageBoxRequest> boxes;
  std::vector<BrowseForFolderRequest> requests;

 private:
  std::unique_ptr<ScopedMessageBoxHandler> mBoxes;
  std::unique_ptr<ScopedBrowseForFolderHandler> mBrowser;
};

TEST_F(FolderDialogsTest, ValidateFolderTellsTheUserWhyAFolderIsRefused) {
  zenutl_test::WriteWholeFile(File("file"), "");
  const struct {
    std::string path;
    int answer;
    bool valid;
    std::vector<CString> texts;  // question first, then the message, if any
    unsigned int lastCaption, lastStyle;
  } rows[] = {
      {Dir().string(), eAnswerYes, true, {}, 0, 0},
      {File("file"), eAnswerYes, false, {Text(17079, File("file"))}, 17080, 16},
      {File("no/deeper"), eAnswerNo, false, {Text(17081, File("no/deeper"))}, 17082, 68},
      {File(" lead"), eAnswerYes, false, {Text(17081, File(" lead")), Text(17083)}, 17084, 16},
      {File("tab\t"), eAnswerYes, false, {Text(17081, File("tab\t")), Text(17083)}, 17084, 16},
      {File("file/sub"),
       eAnswerYes,
       false,
       {Text(17081, File("file/sub")), Text(17085)},
       17086,
       16},
      {File("in side\\ok"), eAnswerYes, true, {Text(17081, File("in side\\ok"))}, 17082, 68}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    Install(row.answer);
    EXPECT_EQ(row.valid, ValidateFolder(row.path.c_str(), nullptr));
    ASSERT_EQ(row.texts.size(), boxes.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) EXPECT_EQ(row.texts[i], boxes[i].text);
    if (boxes.empty()) continue;
    EXPECT_EQ(Text(row.lastCaption), boxes.back().caption);
    EXPECT_EQ(row.lastStyle, boxes.back().style);
  }
  EXPECT_FALSE(fs::exists(File("no")));
  EXPECT_FALSE(fs::exists(File(" lead")));
  EXPECT_TRUE(fs::is_directory(File("in side/ok")));
}

TEST_F(FolderDialogsTest, ValidateFolderWithoutAHostTakesTheDefaultYes) {
  EXPECT_TRUE(ValidateFolder((File("quiet") + "\\made").c_str(), nullptr));
  EXPECT_TRUE(fs::is_directory(File("quiet/made")));
}

TEST_F(FolderDialogsTest, BrowseForFolderStartsAtAUsableFolderAndReturnsThePick) {
  zenutl_test::WriteWholeFile(File("file"), "");
  CWnd* const window = reinterpret_cast<CWnd*>(0x5150);
  Install(eAnswerYes, true, File("picked"));
  char path[MAX_PATH];
  std::strcpy(path, (FromNativePath(Dir().string()) + "\\").c_str());
  EXPECT_TRUE(BrowseForFolder(path, window, "C:\\fallback", "Pick one"));
  EXPECT_EQ(FromNativePath(File("picked")), path);
  ASSERT_EQ(1u, requests.size());
  EXPECT_EQ(window, requests[0].parent);
  EXPECT_EQ(CString("Pick one"), requests[0].title);
  EXPECT_EQ(CString(FromNativePath(Dir().string())), requests[0].startFolder);
  EXPECT_EQ(69u, requests[0].flags);
  const FolderSelectionStatus ordinary =
      requests[0].onSelectionChanged(CString(Dir().string()), CString("folder"));
  EXPECT_EQ(CString("     " + FromNativePath(Dir().string())), ordinary.statusText);
  EXPECT_TRUE(ordinary.okEnabled);

  Install(eAnswerYes, false);  // cancelled, from the fallback: the path is a file
  std::strcpy(path, File("file").c_str());
  EXPECT_FALSE(BrowseForFolder(path, nullptr, "C:\\fallback\\", nullptr));
  EXPECT_EQ(File("file"), path);
  EXPECT_EQ(CString("C:\\fallback"), requests.at(0).startFolder);
  EXPECT_EQ(Text(17078), requests[0].title);
  EXPECT_EQ(Text(17079, File("file")), boxes.at(0).text);
  const FolderSelectionStatus virtualItem =
      requests[0].onSelectionChanged(CString(""), CString("Network"));
  EXPECT_EQ(Text(17076, "Network"), virtualItem.statusText);
  EXPECT_FALSE(virtualItem.okEnabled);
}

TEST(FolderSelection, TheFirstRuleThatHoldsDecides) {
  const struct {
    const char* path;
    platform::EDriveType drive;
    bool readOnly, freeSpaceKnown;
    CString status;
  } rows[] = {{"\\cd", platform::eDriveCdRom, true, false, Text(17074, "\\cd")},
              {"\\ro", platform::eDriveFixed, true, true, Text(17075, "\\ro")},
              {"\\usb", platform::eDriveRemovable, true, false, Text(17075, "\\usb")},
              {"", platform::eDriveUnknown, false, true, Text(17076, "Display")},
              {"\\usb", platform::eDriveRemovable, false, false, Text(17077, "\\usb")},
              {"\\usb", platform::eDriveRemovable, false, true, CString("     \\usb")}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.path) + " " + std::to_string(row.drive));
    const FolderSelectionStatus status = zenutl::file::DescribeFolderSelection(
        {CString(row.path), CString("Display"), row.drive, row.readOnly, row.freeSpaceKnown});
    EXPECT_EQ(row.status, status.statusText);
    EXPECT_EQ(row.status.Left(5) == "     ", status.okEnabled);
  }
}

TEST(FolderSelection, DriveTypesFollowTheFileSystem) {
  EXPECT_EQ(platform::eDriveCdRom, platform::ClassifyDriveType(0x9660, true));        // iso9660
  EXPECT_EQ(platform::eDriveRemote, platform::ClassifyDriveType(0xFF534D42, false));  // cifs
  EXPECT_EQ(platform::eDriveRemovable, platform::ClassifyDriveType(0xEF53, true));    // ext4
  EXPECT_EQ(platform::eDriveFixed, platform::ClassifyDriveType(0xEF53, false));
  EXPECT_EQ(platform::eDriveRamDisk, platform::GetDriveType("/dev/shm"));
  EXPECT_EQ(platform::eDriveNoRootDir, platform::GetDriveType("\\no\\such\\place"));
  EXPECT_TRUE(platform::GetDiskFreeSpace("\\tmp", nullptr));
  EXPECT_FALSE(platform::GetDiskFreeSpace("\\no\\such\\place", nullptr));
}

}  // namespace

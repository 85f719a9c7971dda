// The replaceable host dialogs: defaults that never block, and installed handlers.
#include "zenutl/host_dialogs.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace ZnHostDialogs;

TEST(HostDialogs, WithoutAHostBoxesGiveTheirDefaultButtonAndBrowsingIsCancelled) {
  const struct {
    unsigned int style;
    int answer;
  } rows[] = {{eOk | eIconError, eAnswerOk},
              {eOkCancel | eDefaultButton2, eAnswerCancel},
              {eYesNo | eIconInformation, eAnswerYes},
              {eYesNo | eDefaultButton2, eAnswerNo},
              {eAbortRetryIgnore | eDefaultButton2, eAnswerRetry},
              {0xE, eAnswerOk}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.answer, ShowMessageBox(nullptr, "text", "caption", row.style)) << row.style;
  }
  CString chosen("untouched");
  EXPECT_FALSE(BrowseForFolder(BrowseForFolderRequest(), chosen));
  EXPECT_EQ(CString("untouched"), chosen);
}

TEST(HostDialogs, InstalledHandlersAnswerUntilTheirScopeEnds) {
  std::vector<MessageBoxRequest> seen;
  CWnd* const window = reinterpret_cast<CWnd*>(0x1234);
  BrowseForFolderRequest request = {};
  request.startFolder = "C:\\start";
  CString chosen;
  {
    ScopedMessageBoxHandler handler([&](const MessageBoxRequest& box) {
      seen.push_back(box);
      return static_cast<int>(eAnswerNo);
    });
    ScopedBrowseForFolderHandler browser([](const BrowseForFolderRequest& asked, CString& out) {
      out = asked.startFolder + "\\picked";
      return true;
    });
    EXPECT_EQ(eAnswerNo, ShowMessageBox(window, "Go on?", nullptr, eYesNo | eIconQuestion));
    EXPECT_TRUE(BrowseForFolder(request, chosen));
  }
  ASSERT_EQ(1u, seen.size());
  EXPECT_EQ(window, seen[0].parent);
  EXPECT_EQ(CString("Go on?"), seen[0].text);
  EXPECT_EQ(CString(""), seen[0].caption);
  EXPECT_EQ(static_cast<unsigned int>(eYesNo | eIconQuestion), seen[0].style);
  EXPECT_EQ(CString("C:\\start\\picked"), chosen);
  EXPECT_EQ(eAnswerYes, ShowMessageBox(window, "Go on?", nullptr, eYesNo));
  EXPECT_FALSE(BrowseForFolder(request, chosen));
}

}  // namespace

// ValidateFolder and BrowseForFolder: the path functions that talk to the user, through the
// host's dialog handlers.
#include <cctype>
#include <string>

#include "file/folder_selection.h"
#include "file/split_path.h"
#include "zenutl/host_dialogs.h"
#include "zenutl/language_string.h"
#include "zenutl/path_functions.h"
#include "zenutl/zn_string.h"

namespace {

enum : unsigned int {
  kErrorBox = ZnHostDialogs::eOk | ZnHostDialogs::eIconError,                 // 16
  kCreateQuestion = ZnHostDialogs::eYesNo | ZnHostDialogs::eIconInformation,  // 68
  // File system folders only, a status line, the newer dialog style.
  kBrowseFlags = 0x1 | 0x4 | 0x40,  // 69
};

const unsigned int kCdDriveText = 17074;
const unsigned int kReadOnlyText = 17075;
const unsigned int kNoPathText = 17076;
const unsigned int kDriveNotReadyText = 17077;
const unsigned int kBrowseTitle = 17078;
const unsigned int kNotAFolderText = 17079;
const unsigned int kNotAFolderCaption = 17080;
const unsigned int kCreateText = 17081;
const unsigned int kCreateCaption = 17082;
const unsigned int kSpaceText = 17083;
const unsigned int kSpaceCaption = 17084;
const unsigned int kNotCreatedText = 17085;
const unsigned int kNotCreatedCaption = 17086;

void ShowError(CWnd* parent, const CString& text, unsigned int caption) {
  ZnHostDialogs::ShowMessageBox(parent, text, LanguageString::Get(caption), kErrorBox);
}

bool IsSpace(char ch) {
  return std::isspace(static_cast<unsigned char>(ch)) != 0;
}

}  // namespace

namespace zenutl {
namespace file {

FolderSelectionFacts GatherFolderSelectionFacts(const CString& path, const CString& displayName) {
  FolderSelectionFacts facts = {CString(Normalized(path)), displayName, platform::eDriveUnknown,
                                false, true};
  if (facts.path.IsEmpty()) return facts;
  facts.driveType = platform::GetDriveType(facts.path);
  facts.readOnly = platform::IsReadOnlyItem(facts.path);
  if (facts.driveType == platform::eDriveRemovable) {
    facts.freeSpaceKnown = platform::GetDiskFreeSpace(facts.path, nullptr);
  }
  return facts;
}

ZnHostDialogs::FolderSelectionStatus DescribeFolderSelection(const FolderSelectionFacts& facts) {
  const char* path = facts.path.GetString();
  if (!facts.path.IsEmpty() && facts.driveType == platform::eDriveCdRom) {
    return {ZnString::Format(static_cast<unsigned long>(kCdDriveText), path), false};
  }
  if (!facts.path.IsEmpty() && facts.readOnly) {
    return {ZnString::Format(static_cast<unsigned long>(kReadOnlyText), path), false};
  }
  if (facts.path.IsEmpty()) {
    return {
        ZnString::Format(static_cast<unsigned long>(kNoPathText), facts.displayName.GetString()),
        false};
  }
  if (facts.driveType == platform::eDriveRemovable && !facts.freeSpaceKnown) {
    return {ZnString::Format(static_cast<unsigned long>(kDriveNotReadyText), path), false};
  }
  return {ZnString::Format("     %s", path), true};
}

}  // namespace file
}  // namespace zenutl

bool ValidateFolder(const char* path, CWnd* parent) {
  const char* text = path ? path : "";
  const int kind = FileExist(text);
  if (kind == 2) {
    ShowError(parent, ZnString::Format(static_cast<unsigned long>(kNotAFolderText), text),
              kNotAFolderCaption);
    return false;
  }
  if (kind == 1) return true;
  const int answer = ZnHostDialogs::ShowMessageBox(
      parent, ZnString::Format(static_cast<unsigned long>(kCreateText), text),
      LanguageString::Get(kCreateCaption), kCreateQuestion);
  if (answer != ZnHostDialogs::eAnswerYes) return false;
  // A name that begins or ends in white space would not be kept as typed.
  const std::string normalized = zenutl::file::Normalized(text);
  const std::string last = normalized.substr(normalized.rfind('\\') + 1);
  if (!last.empty() && (IsSpace(last.front()) || IsSpace(last.back()))) {
    ShowError(parent, LanguageString::Get(kSpaceText), kSpaceCaption);
    return false;
  }
  if (!CreateFolder(text)) {
    ShowError(parent, LanguageString::Get(kNotCreatedText), kNotCreatedCaption);
    return false;
  }
  return true;
}

bool BrowseForFolder(char* path, CWnd* parent, const char* fallback, const char* title) {
  if (!path) return false;
  std::string start = path;
  if (!start.empty() && !ValidateFolder(path, parent)) start = fallback ? fallback : "";
  if (!start.empty() && start.back() == '\\') start.pop_back();

  ZnHostDialogs::BrowseForFolderRequest request;
  request.parent = parent;
  request.title = (title && *title) ? title : LanguageString::Get(kBrowseTitle);
  request.startFolder = CString(start);
  request.flags = kBrowseFlags;
  request.onSelectionChanged = [](const CString& selected, const CString& displayName) {
    return zenutl::file::DescribeFolderSelection(
        zenutl::file::GatherFolderSelectionFacts(selected, displayName));
  };
  CString chosen;
  if (!ZnHostDialogs::BrowseForFolder(request, chosen)) return false;
  const std::string folder = zenutl::file::Normalized(chosen);
  if (folder.empty() || folder.size() >= MAX_PATH) return false;
  zenutl::file::CopyBounded(path, MAX_PATH, folder);
  return true;
}

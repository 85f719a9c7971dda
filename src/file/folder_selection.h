// How the folder browser describes the folder the user points at: the status line and whether
// OK may be pressed. The facts about the folder are gathered from the file system first, so
// that the rules themselves are plain logic.
#ifndef ZENUTL_FILE_FOLDER_SELECTION_H_
#define ZENUTL_FILE_FOLDER_SELECTION_H_

#include "platform/file_system.h"
#include "zenutl/cstring.h"
#include "zenutl/host_dialogs.h"

namespace zenutl {
namespace file {

struct FolderSelectionFacts {
  CString path;         // in Windows form; empty when the item is no file system folder
  CString displayName;  // what the browser shows for the item
  platform::EDriveType driveType;
  bool readOnly;
  bool freeSpaceKnown;  // the file system answered a question for its free space
};

// Asks the file system about `path`; the free space is asked only of removable drives.
FolderSelectionFacts GatherFolderSelectionFacts(const CString& path, const CString& displayName);

// The first rule that holds decides:
//   optical drive            => text 17074 with the path, OK disabled
//   read-only item           => text 17075 with the path, OK disabled
//   no file system path      => text 17076 with the display name, OK disabled
//   removable, not answering => text 17077 with the path, OK disabled
//   otherwise                => "     <path>", OK enabled
ZnHostDialogs::FolderSelectionStatus DescribeFolderSelection(const FolderSelectionFacts& facts);

}  // namespace file
}  // namespace zenutl

#endif  // ZENUTL_FILE_FOLDER_SELECTION_H_

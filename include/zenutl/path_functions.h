// Path functions: taking Windows paths apart and putting them together, making and removing
// folders, asking about files, and letting the user pick a folder.
//
// Two layers live here. The text functions (ZnSplitPath to ZnGetFileExtension) are pure string
// logic on Windows paths: they work on a copy in which every `/` has become `\`, a drive is
// "C:", and results use `\`. The other functions reach the file system; they accept either
// slash form, and paths they hand back are in the Windows form (`/tmp/a` comes back as
// `\tmp\a`). Fixed buffers of the interface hold MAX_PATH (260) characters with the terminator.
// A shortcut is a symbolic link, and "the same item" is the same device and inode. Questions
// and messages to the user go through host_dialogs.h and never block. For operations on files
// with a reason in words (remove, rename) and lists of file names, see zn_file.h; for the class
// holding the parts of one path, fn_class.h.
//
// Error contract: nothing here throws (except std::bad_alloc). Failures are told by the result
// (false, 0 or an empty text); functions with a user interface also tell the user. Null text
// arguments are taken as empty texts.
#ifndef ZENUTL_PATH_FUNCTIONS_H_
#define ZENUTL_PATH_FUNCTIONS_H_

#include <string>

#include "zenutl/cstring.h"
#include "zenutl/platform_types.h"

class CWnd;

// Sizes of the component buffers of ZnSplitPath, with the terminator.
enum : int {
  ZN_MAX_DRIVE = 3,
  ZN_MAX_DIR = 256,
  ZN_MAX_FNAME = 256,
  ZN_MAX_EXT = 256,
};

// --- Text functions -----------------------------------------------------------------------

// Splits a path into drive ("C:"), folder with its trailing `\`, name, and extension with its
// dot. Any output may be null; the others need ZN_MAX_* characters and are cut to fit.
//   "C:\a\b.txt" => "C:", "\a\", "b", ".txt";  "a/b.c.d" => "", "a\", "b.c", ".d"
//   ".profile"   => "", "", "", ".profile";    "x\" => "", "x\", "", ""
void ZnSplitPath(const char* path, char* drive, char* dir, char* name, char* ext);

// Builds a path into `path` (MAX_PATH characters): the drive's first letter and ':', the folder
// with a `\` added if it does not end in a slash, the name, and the extension with a `.` added
// if it lacks one. Empty or null parts are left out; the result is cut to fit.
//   ("C", "a", "b", "txt") => "C:a\b.txt";  ("", "\x\", "y", ".z") => "\x\y.z"
void ZnMakePath(char* path, const char* drive, const char* dir, const char* name, const char* ext);

// Joins two paths with one `\`, unless the first is empty or either side already has one.
// Backslashes are not merged, and an empty second part leaves a trailing `\`.
//   ("a", "b") => "a\b";  ("", "b") => "b";  ("a/", "b/c") => "a\b\c";  ("a\", "\b") => "a\\b"
//   ("a", "") => "a\"
CString ZnPathAppend(const char* path, const char* more);
std::string ZnPathAppend(std::string path, std::string more);

// The folder of a path: the text before the last `\`, keeping the `\` of a drive root.
//   "C:\a\x.txt" => "C:\a";  "C:/x.txt" => "C:\";  "x.txt" => "";  "\x" => "";  "a\x" => ""
// A last `\` at index 2 is always taken for a drive root:  "ab\x" => "ab\".
CString ZnGetDirectory(const char* path);

// The text after the last `\`, or the whole text.  "a\b.txt" => "b.txt"
CString ZnGetFileName(const char* path);

// The file name without its extension. With `ext` null the last extension is cut; otherwise
// only an extension equal to `ext` (no dot, any case) is.
//   ("a\b.txt", "TXT") => "b";  ("b.txt", "dat") => "b.txt";  ("b.txt", null) => "b"
CString ZnGetFileTitle(const char* path, const char* ext);

// The text after the last `.` of the whole path, without the dot; "" if there is none. The
// search does not stop at folders:  "a\b.txt" => "txt";  "a.b\c" => "b\c".
CString ZnGetFileExtension(const char* path);

// --- File system functions ----------------------------------------------------------------

// Makes a folder and its missing parents. True if the folder (or a file of that name) exists
// afterwards. One trailing `\` is ignored. A path of 3 characters or less that does not exist is
// taken for a drive root and gives true without anything being made; a path of MAX_PATH
// characters or more gives false.
bool CreateFolder(const char* path);
bool CreateFolder(const wchar_t* path);

// 0: nothing there, 1: a folder, 2: a file (anything that is not a folder). Links are followed.
int FileExist(const char* path);

// True if `path` is a usable folder, asking the user through the host's message box: it tells
// that a file is in the way, asks whether a missing folder should be made, refuses a last
// component that begins or ends in white space, and tells when making it failed. With no
// message box handler installed the question gets its default answer, yes, and nothing is shown.
bool ValidateFolder(const char* path, CWnd* parent);

// Lets the user pick a folder through the host's folder browser, starting at `path` (or at
// `fallback` if `path` is not a usable folder). `title` null or empty takes the standard text.
// True if a folder was picked; it is then left in `path` (MAX_PATH characters) in Windows form.
// False if cancelled or if no browser is installed. While browsing, the host can ask the
// request's onSelectionChanged for the status line: an optical drive, a read-only folder, an item
// outside the file system or a removable drive that does not answer disable OK.
bool BrowseForFolder(char* path, CWnd* parent, const char* fallback, const char* title);

// The identity of a file system item, the shell's form of a path. Free with ZnFreeIDList.
struct _ITEMIDLIST {  // NOLINT: the platform's name
  unsigned long long device;
  unsigned long long inode;
};
// A new item for an existing path (links followed), or null if it does not exist.
_ITEMIDLIST* ZnGetIDListFromPath(const char* path);
void ZnFreeIDList(_ITEMIDLIST* item);

// True if both paths name one existing item: the same file through links, hard links, `\` or
// `/`, or `.` and `..`. A path that does not exist gives false.
bool ZnComparePaths(const char* first, const char* second);

// Creates a new empty file with a name of its own in `folder` (null: the temporary folder) and
// returns its path. The name is the first three characters of `prefix` ("tmp" if it is empty),
// up to four hexadecimal digits and ".TMP". With a non-empty `ext` the file is then renamed to
// end in that extension instead; a name already taken is never replaced. Empty if no file
// could be made.  (null, "log", "txt") => "\tmp\log1A2F.txt"
CString ZnGetTempFileName(const char* folder, const char* prefix, const char* ext);

// Fills `target` (MAX_PATH characters) with the full path that the symbolic link `shortcut`
// finally points to. False, with `target` empty, if `shortcut` is no link, its target is missing,
// or the result does not fit.
bool ZnResolveShortcut(const char* shortcut, char* target);

// The absolute path with every link resolved and no `.` or `..`, in Windows form; empty if the
// path does not exist.
CString ZnGetCanonicalPath(const char* path);

// The long form of a path: as ZnGetCanonicalPath. Empty, with errno set to ENOENT, if the path
// does not exist.
CString ZnGetLongPathName(const char* path);

// Removes a folder with everything in it. Links inside are removed, never followed. A failure
// is remembered and the rest is still removed; true if nothing failed.
bool ZnRemoveDirectory(const char* path);

// Whether the file can be written. `kind`, if not null, takes FileExist's answer. A file is
// opened for writing and closed; where nothing is, a file is made and removed again; a folder
// gives false. When opening fails, `error` (if not null) takes the system's error text.
bool ZnCanCreateFile(const char* path, CString* error, int* kind);

// Copies a file into `to`, opened for writing ("wb") as it stands: other links to it see the
// copy, and its owner and permissions stay. False if `from` cannot be read, or `failIfExists`
// is true and `to` exists, or `to` is read-only (no write permission bit, refused to root as
// well) or cannot be opened, or writing fails; a copy that fails part-way leaves what it wrote.
// The same text for both paths copies nothing and gives !failIfExists, and so does another name
// of the same file, which writing would destroy.
bool ZnCopyFile(const char* from, const char* to, bool failIfExists);

// False if the file cannot be opened or a zero byte is found in what is read. Reading is as in
// a Windows text-mode stream: CR LF counts as one character and a Ctrl-Z (0x1A) ends the file.
// The file is read in blocks of 30768 characters until `maxBytes` have been read or the file
// ends; the block that passes `maxBytes` is read and checked whole.
bool IsTextFile(const char* path, unsigned int maxBytes);

#endif  // ZENUTL_PATH_FUNCTIONS_H_

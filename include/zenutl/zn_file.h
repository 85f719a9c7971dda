// ZnFile: small operations on files by name: existence, removal and renaming with a reason in
// words, checks of a file name, a free name near a wanted one, the lists of several file names
// that file dialogs use, and the detection of a text file's encoding.
//
// Paths are Windows paths in either slash form, as in path_functions.h (which holds the path
// text functions, folders and copying). A list of several files is one block of text that
// starts with the folder once, followed by the names without their folder:
//   zero-separated:  folder \0 name \0 ... name \0 \0   (a multi-select file dialog's form)
//   with separator:  folder | name | ... | name \0
// A single file is its whole path alone, and an empty list is the empty text.
//
// Error contract: Remove and Rename answer false and give the system's error text; the others
// answer by their results. Nothing here throws except std::bad_alloc.
#ifndef ZENUTL_ZN_FILE_H_
#define ZENUTL_ZN_FILE_H_

#include <vector>

#include "zenutl/cstring.h"

namespace ZnFile {

enum ETextFileEncoding {
  eNoText = 0,   // no text, or not found out
  eAnsi = 1,     // text with no byte-order mark
  eUtf8 = 2,     // EF BB BF
  eUtf16BE = 3,  // FE FF
  eUtf16LE = 4,  // FF FE, third byte not zero
  eUtf32BE = 5,  // 00 00 FE FF
  eUtf32LE = 6,  // FF FE 00 00
};

// True if something (a file or a folder) is at `path`.
bool FileExists(const CString& path);

// True if nothing is at `path` afterwards: a missing file is no failure. A folder is not
// removed. On failure `error`, if not null, takes the system's error text.
bool Remove(const CString& path, CString* error);

// Renames a file or folder. Fails, rather than replacing it, when `to` exists. On failure
// `error`, if not null, takes the system's error text.
bool Rename(const CString& from, const CString& to, CString* error);

// True if none of  * \ / ? < > : " |  is in the text. "" is valid; a full path never is.
bool IsValidFileName(const CString& name);

// `path` itself if nothing is there, otherwise the first free "<title><n>.<ext>" in its folder
// for n = 2, 3, ... A name without a folder is taken in the temporary folder. Nothing is made,
// so another process may take the name first.
//   "x.txt" with x.txt and x2.txt taken => "<folder>\x3.txt";  "data" taken => "data2."
CString GetTempFileNameA(const CString& path);

// The text cut at its last `.` (anywhere, folders included), then "." and `ext`.
//   ("a.doc", "txt") => "a.txt";  ("a", "txt") => "a.txt";  ("a.b\c", "txt") => "a.txt"
CString SetFileExtension(const char* path, const char* ext);

// Lists of file names; the block is the caller's, to be freed with delete[]. With more than
// one name the folder is that of the first name, written with `/` ("C:/d"), and the other
// names lose their folders.
//   {"C:\d\a.txt", "C:\d\b.txt"}      => "C:/d\0a.txt\0b.txt\0\0"
//   {"C:\d\a.txt", "C:\d\b.txt"}, '|' => "C:/d|a.txt|b.txt"
char* GetFileNames(const std::vector<CString>& names);
char* GetFileNames(const std::vector<CString>& names, char separator);

// Appends to `out` the full paths of a zero-separated list: if its first text is an existing
// folder, each name joined to it with `\` ("C:/d\a.txt"); otherwise the first text alone.
void GetFileNames(const char* list, std::vector<CString>& out);
// Appends to `out` the full paths of a list with `separator`, each the folder and the name
// joined by boost::filesystem's path operator in the native form of the system, here with `/`
// ("C:\d|a.txt" => "C:/d/a.txt"); a text without the separator is appended whole.
void GetFileNames(const char* list, std::vector<CString>& out, char separator);

// False if the file cannot be opened or a zero byte is in it: in the first block of 30768
// bytes only, or with `wholeFile` in the whole file. UTF-16 and UTF-32 texts fail this test.
bool IsTextFile(const CString& path, bool wholeFile);

// The encoding from the byte-order mark; without one, eAnsi if `checkText` and the first block
// passes IsTextFile, else eNoText. Files under two bytes give eNoText. A file of just FF FE
// is eUtf16LE; FF FE 00 and FF FE 00 41 have no mark.
ETextFileEncoding GetEncoding(const CString& path, bool checkText);

}  // namespace ZnFile

#endif  // ZENUTL_ZN_FILE_H_

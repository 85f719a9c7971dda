// Splitting and building Windows paths as the C runtime's _splitpath and _makepath do, on the
// text as given (`/` and `\` both separate folders). Shared by the path text functions, which
// normalise slashes first, and by FNClass and CreateFolder, which do not.
#ifndef ZENUTL_FILE_SPLIT_PATH_H_
#define ZENUTL_FILE_SPLIT_PATH_H_

#include <cstddef>
#include <string>

namespace zenutl {
namespace file {

struct PathParts {
  std::string drive;      // "C:" when the second character is ':'
  std::string directory;  // up to and including the last slash
  std::string name;       // up to the last dot after the last slash
  std::string extension;  // from that dot, with it
};

PathParts SplitPath(const std::string& path);
// Drive letter and ':', folder with a `\` added unless it ends in a slash, name, and the
// extension with a '.' added unless it has one. Null or empty parts are left out.
std::string MakePath(const char* drive, const char* dir, const char* name, const char* ext);

// Copies `text` into `buffer` of `size` characters (terminator included), cutting it to fit.
// A null buffer is left alone.
void CopyBounded(char* buffer, std::size_t size, const std::string& text);

// "a/b" => "a\b"; null => "".
std::string Normalized(const char* path);

}  // namespace file
}  // namespace zenutl

#endif  // ZENUTL_FILE_SPLIT_PATH_H_

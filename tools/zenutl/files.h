// Files as the zenutl tool's commands read and write them: whole, with "-" for the standard
// streams, and with a FileError that names the file and the system's reason when that fails.
#ifndef ZENUTL_TOOLS_ZENUTL_FILES_H_
#define ZENUTL_TOOLS_ZENUTL_FILES_H_

#include <fstream>
#include <string>

namespace zenutl_tool {

// The name a message uses: the path itself, or "standard input" for "-".
std::string DisplayName(const std::string& path);

// Opens `path` for reading in binary; throws FileError "PATH: <reason>" when it doesn't exist,
// is a folder or can't be opened. "-" is not accepted here: use ReadWholeInput for that.
void OpenInputFile(const std::string& path, std::ifstream& stream);

// The size in bytes of an opened regular file, or 0 when it can't be told.
unsigned long long FileSize(const std::string& path);

// The whole content of `path`, or of the standard input for "-". Throws FileError.
std::string ReadWholeInput(const std::string& path);

// Writes `text` to `path`, or to the standard output for "-" or "". Throws FileError.
void WriteWholeOutput(const std::string& path, const std::string& text);

// "PATH: <strerror(error)>".
std::string SystemErrorText(const std::string& path, int error);

}  // namespace zenutl_tool

#endif  // ZENUTL_TOOLS_ZENUTL_FILES_H_

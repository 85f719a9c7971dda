// zenutl md5 and zenutl base64: the library's MD5 digest and Base64 text on files, in the forms
// md5sum and base64 print, so their output can be compared with those tools'.
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "commands.h"
#include "files.h"
#include "zenutl/base64.h"
#include "zenutl/md5.h"

namespace zenutl_tool {
namespace {

// The digest of the whole of `in`, read in large pieces. Throws FileError on a read error.
std::string DigestOf(std::istream& in, const std::string& path) {
  MD5 digest;
  std::vector<char> buffer(1 << 16);
  while (in) {
    in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    digest.Update(buffer.data(), static_cast<unsigned int>(in.gcount()));
  }
  if (in.bad()) throw FileError(SystemErrorText(path, EIO));
  digest.Finalize();
  return digest.GetDigest();
}

// md5sum's line: a name holding a backslash or a line feed is written escaped, and the line
// then starts with a backslash.
std::string Md5Line(const std::string& digest, const std::string& name) {
  std::string escaped;
  for (const char ch : name) {
    if (ch == '\\') {
      escaped += "\\\\";
    } else if (ch == '\n') {
      escaped += "\\n";
    } else {
      escaped += ch;
    }
  }
  return (escaped == name ? "" : "\\") + digest + "  " + escaped + "\n";
}

int RunMd5(const Arguments& arguments) {
  std::vector<std::string> files = arguments.Operands();
  if (files.empty()) files.push_back("-");
  int status = kSuccess;
  for (const std::string& path : files) {
    try {
      std::string digest;
      if (path == "-") {
        digest = DigestOf(std::cin, path);
      } else {
        std::ifstream stream;
        OpenInputFile(path, stream);
        digest = DigestOf(stream, path);
      }
      std::cout << Md5Line(digest, path);
    } catch (const FileError& error) {
      std::cout.flush();
      std::cerr << "zenutl: " << error.what() << "\n";
      status = kFailure;
    }
  }
  return status;
}

int RunEncode(const Arguments& arguments) {
  const std::string data = ReadWholeInput(arguments.OperandCount() ? arguments.Operand(0) : "-");
  std::string text = Base64::Encode(data, 76, "\n");
  if (!text.empty() && text.back() != '\n') text += '\n';
  std::cout << text;
  return kSuccess;
}

int RunDecode(const Arguments& arguments) {
  const std::string path = arguments.OperandCount() ? arguments.Operand(0) : "-";
  const std::string text = ReadWholeInput(path);
  // The decoder takes a zero byte for a data character; text with one is no Base64 at all.
  const std::size_t zero = text.find('\0');
  if (zero != std::string::npos) {
    throw FileError(DisplayName(path) + ": not Base64: a zero byte at offset " +
                    std::to_string(zero));
  }
  std::string data;
  try {
    data = Base64::Decode(text);
  } catch (const std::runtime_error&) {
    throw FileError(DisplayName(path) +
                    ": not Base64: a character outside A-Z a-z 0-9 + / =, or misplaced padding");
  }
  std::cout.write(data.data(), static_cast<std::streamsize>(data.size()));
  return kSuccess;
}

}  // namespace

CommandGroup Md5Commands() {
  CommandGroup group{"md5", "MD5 digests of files, as md5sum prints them", {}};
  group.commands.push_back(
      {{"md5",
        "[FILE...]",
        0,
        CommandSyntax::kMany,
        "Print the MD5 digest of each FILE (standard input for none or '-').",
        "One line per file: 32 lower-case hexadecimal digits, two blanks, the name.\n"
        "A file that can't be read is reported and the others still go through.",
        {}},
       &RunMd5});
  return group;
}

CommandGroup Base64Commands() {
  CommandGroup group{"base64", "Base64 text of binary data, and back", {}};
  group.commands.push_back(
      {{"base64 encode",
        "[FILE]",
        0,
        1,
        "Write FILE (or standard input) as Base64 text in lines of 76 characters.",
        "",
        {}},
       &RunEncode});
  group.commands.push_back(
      {{"base64 decode",
        "[FILE]",
        0,
        1,
        "Write the bytes of the Base64 text in FILE (or standard input).",
        "White space is skipped anywhere. Text that isn't Base64 is refused with exit status 2.",
        {}},
       &RunDecode});
  return group;
}

}  // namespace zenutl_tool

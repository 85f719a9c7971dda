#include "zenutl/fn_class.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "file/split_path.h"
#include "platform/file_system.h"

using zenutl::file::CopyBounded;

FNClass::Buffers::Buffers()
    : drive(new char[kDriveSize]()),
      directory(new char[kDirectorySize]()),
      name(new char[kNameSize]()),
      extension(new char[kExtensionSize]()),
      path(new char[kPathSize]()),
      scratch(new char[kScratchSize]()) {}

FNClass::Buffers::~Buffers() {
  delete[] drive;
  delete[] directory;
  delete[] name;
  delete[] extension;
  delete[] path;
  delete[] scratch;
}

FNClass::FNClass() : mBuffers(new Buffers) {}

FNClass::FNClass(const char* path) : mBuffers(new Buffers) {
  CopyBounded(mBuffers->path, kPathSize, path ? path : "");
}

void FNClass::Split(const char* path) {
  if (path) CopyBounded(mBuffers->path, kPathSize, path);
  Split();
}

void FNClass::Split() {
  const zenutl::file::PathParts parts = zenutl::file::SplitPath(mBuffers->path);
  CopyBounded(mBuffers->drive, kDriveSize, parts.drive);
  CopyBounded(mBuffers->directory, kDirectorySize, parts.directory);
  CopyBounded(mBuffers->name, kNameSize, parts.name);
  CopyBounded(mBuffers->extension, kExtensionSize, parts.extension);
}

void FNClass::Merge() {
  Merge(mBuffers->drive, mBuffers->directory, mBuffers->name, mBuffers->extension);
}

void FNClass::Merge(const char* drive, const char* dir, const char* name, const char* ext) {
  CopyBounded(mBuffers->path, kPathSize, zenutl::file::MakePath(drive, dir, name, ext));
}

const char* FNClass::GetNameAndExt() const {
  std::snprintf(mBuffers->scratch, kScratchSize, "%s%s", mBuffers->name, mBuffers->extension);
  return mBuffers->scratch;
}

const char* FNClass::GetNameAndExt(const char* path) {
  Split(path ? path : "");
  return GetNameAndExt();
}

void FNClass::SetNameAndExt(const char* nameAndExt) {
  const std::string text = nameAndExt ? nameAndExt : "";
  const std::size_t dot = text.rfind('.');
  CopyBounded(mBuffers->name, kNameSize, text.substr(0, dot));
  if (dot != std::string::npos) CopyBounded(mBuffers->extension, kExtensionSize, text.substr(dot));
}

bool FNClass::Access(int mode) {
  return zenutl::platform::AccessPath(mBuffers->path, mode) == 0;
}

void FNClass::ChangeFileInPath(char* path, const char* name) {
  if (!path) return;
  FNClass parts;
  parts.Split(path);
  CopyBounded(parts.Name(), kNameSize, name ? name : "");
  parts.Merge();
  CopyBounded(path, kPathSize, parts.Path());
}

void FNClass::ChangeExtInPath(char* path, const char* ext) {
  if (!path) return;
  FNClass parts;
  parts.Split(path);
  char* extension = parts.Extension();
  CopyBounded(extension, kExtensionSize, ext ? ext : "");
  if (extension[0] != '.') {
    // A short extension is moved right to make room for the dot; a longer one gives up its
    // first letter to it.
    const std::size_t length = std::strlen(extension);
    if (length < 4) std::memmove(extension + 1, extension, length + 1);
    extension[0] = '.';
  }
  parts.Merge();
  CopyBounded(path, kPathSize, parts.Path());
}

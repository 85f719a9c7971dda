// FNClass: the parts of one Windows path in fixed buffers: drive, folder, name, extension,
// the whole path, and a scratch buffer for the name with its extension.
//
// It splits and merges with the rules of ZnSplitPath and ZnMakePath (path_functions.h), but
// keeps the text as given: `/` is not turned into `\` (both separate folders when splitting).
// Texts longer than a buffer are cut to fit.
//
// Copies share their buffers: after `b = a` (or `FNClass b(a)`) a change through one is seen
// through the other. The buffers live as long as the last object that shares them.
//
// Error contract: nothing here throws except std::bad_alloc; Access answers by its result.
#ifndef ZENUTL_FN_CLASS_H_
#define ZENUTL_FN_CLASS_H_

#include <boost/shared_ptr.hpp>

class FNClass {
 public:
  // Buffer sizes, with the terminator.
  enum : int {
    kDriveSize = 3,
    kDirectorySize = 256,
    kNameSize = 256,
    kExtensionSize = 256,
    kPathSize = 260,
    kScratchSize = 512,
  };

  // All buffers start empty. The second form copies `path` into the path buffer without
  // splitting it.
  FNClass();
  explicit FNClass(const char* path);

  // Copies `path` (if given) into the path buffer and splits it into the parts.
  //   "C:\a\b.txt" => drive "C:", directory "\a\", name "b", extension ".txt"
  void Split(const char* path);
  void Split();

  // Builds the path buffer from the parts, or from the arguments (the parts stay as they were).
  void Merge();
  void Merge(const char* drive, const char* dir, const char* name, const char* ext);

  // Name and extension joined, in the scratch buffer; valid until the next call.
  const char* GetNameAndExt() const;
  // Sets the path, splits it, and joins name and extension likewise.
  const char* GetNameAndExt(const char* path);

  // The name becomes the text before the last `.` of `nameAndExt` (all of it without a dot);
  // the extension becomes the text from that dot. Without a dot the extension stays as it was.
  //   "audit_trail.xsl" => "audit_trail", ".xsl";  "README" => "README", (unchanged)
  void SetNameAndExt(const char* nameAndExt);

  // True if the path exists (mode 0), is writable (2), readable (4) or both (6).
  bool Access(int mode);

  // Replace in place the name of `path` (a buffer of kPathSize), keeping folder and extension.
  //   ("C:\a\b.txt", "c") => "C:\a\c.txt"
  static void ChangeFileInPath(char* path, const char* name);
  // Replace in place the extension of `path`. An extension without its dot gets one: one of
  // fewer than 4 characters is moved right to make room, a longer one loses its first letter.
  //   ("a.doc", "txt") => "a.txt";  ("a.doc", ".html") => "a.html";  ("a.doc", "html") => "a.tml"
  static void ChangeExtInPath(char* path, const char* ext);

  // The buffers, writable for Merge(). Their sizes are the constants above.
  char* Drive() { return mBuffers->drive; }
  char* Directory() { return mBuffers->directory; }
  char* Name() { return mBuffers->name; }
  char* Extension() { return mBuffers->extension; }
  char* Path() { return mBuffers->path; }
  const char* Drive() const { return mBuffers->drive; }
  const char* Directory() const { return mBuffers->directory; }
  const char* Name() const { return mBuffers->name; }
  const char* Extension() const { return mBuffers->extension; }
  const char* Path() const { return mBuffers->path; }

 private:
  struct Buffers {
    Buffers();
    ~Buffers();
    Buffers(const Buffers&) = delete;
    Buffers& operator=(const Buffers&) = delete;
    char* drive;
    char* directory;
    char* name;
    char* extension;
    char* path;
    char* scratch;
  };
  boost::shared_ptr<Buffers> mBuffers;
};

#endif  // ZENUTL_FN_CLASS_H_

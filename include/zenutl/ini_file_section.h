// IniFileSection: the ConfigurationSection on a classic INI file.
//
// An object names a file and a current section; keys live directly in that section. The store is
// flat: it has no sub-sections, and every operation about them refuses (false, null, or -1 and
// null from the base). Typed values have the text forms of configuration_section.h; the XML store
// is XMLSection.
//
// The object keeps no file open and no data of its own: each operation reads or writes the file
// through the profile functions, which parse a file once and serve unchanged files from memory,
// replace the file atomically on every write, and serialise writers across processes. A write
// survives a crash of the process as soon as it returns; Flush and the destructor make the
// process's writes survive a power loss as well. A file that doesn't exist reads as empty and is
// created by the first write. Section and key names compare without regard to case; blanks
// around names and values are dropped, and so is one pair of matching quotes around a value (a
// value that would lose blanks or quotes that way is written in double quotes, so it reads back
// as written); values longer than 1023 characters read back cut to their first 1023. UTF-16LE
// files with a byte-order mark are read as UTF-8 and stay UTF-16LE when written.
//
// The text "!42!" marks a missing value inside this class: a key whose value is exactly "!42!"
// reads as absent. File names are Windows paths ('\' separators are accepted).
//
// Error contract: nothing throws. Writes answer false when the file can't be written or the text
// can't be stored in an INI file (a line break, ']' in a section name, '=' in a key name, text
// that isn't UTF-8 for a UTF-16 file); Flush answers false when the sync fails.
#ifndef ZENUTL_INI_FILE_SECTION_H_
#define ZENUTL_INI_FILE_SECTION_H_

#include <string>
#include <vector>

#include "zenutl/configuration_section.h"
#include "zenutl/cstring.h"

class IniFileSection : public ConfigurationSection {
 public:
  // Touches no file.
  IniFileSection(const char* file, const char* section);
  IniFileSection(const IniFileSection& other) = default;
  IniFileSection& operator=(const IniFileSection& other) = default;
  // Flushes, dropping the result.
  ~IniFileSection() override;

  using ConfigurationSection::ReadKey;
  using ConfigurationSection::WriteKey;

  ConfigurationSection* Copy() const override;
  // Just takes the name: the section need not exist.
  void ChangeSection(const char* name) override;
  // Always false: there are no sub-sections.
  bool ChangeSubSection(const char* name, int index) override;
  bool ChangeSubSection(const char* name) override;
  // Always null.
  ConfigurationSection* CreateSubSection(const char* name, int index) const override;
  ConfigurationSection* CreateSubSection(const char* name) const override;
  bool SupportsSubSections() const override;  // false

  // Removes the key from the current section; true also when it wasn't there.
  bool DeleteKey(const char* key) override;
  // Removes the current section from the file; the object stays on that name.
  bool DeleteSection() override;
  // The profile functions' flush call: syncs the file and its folder to the disk if this process
  // changed the file since its last flush. True when it succeeded.
  bool Flush() const override;
  // True unless the section holds the key "!42!" with the value "!42!": a long-standing answer
  // that callers have come to depend on, not a test of emptiness. Use GetKeyNames for that.
  bool IsEmpty() const override;
  // Whether the section `name` (the current one when null) holds at least one key; a header
  // alone doesn't count. `index` is ignored.
  bool HasSection(const char* name, int index) const override;
  // Whether the key is present, whatever the length of its value; "!42!" reads as absent.
  bool HasKey(const char* key) const override;

  // Fills the caller's buffer, cut to `size - 1` characters; on false it holds "!42!".
  bool ReadKey(const char* key, wchar_t* buffer, unsigned int size) const override;
  bool ReadKey(const char* key, std::wstring& value) const override;
  bool ReadKey(const char* key, CString& value) const override;

  // The value is stored as given; true when the file now holds it.
  bool WriteKey(const char* key, const wchar_t* value) override;
  bool WriteKey(const char* key, const char* value) override;

  // Always false: this store can't be copied into another.
  bool WriteToSection(ConfigurationSection* target) const override;

  // Switches to another file, keeping the section name.
  virtual void ChangeIniFile(const char* file);
  // Every section name of the file, in file order.
  virtual std::vector<CString> GetSectionNames();
  // Every key name of the current section, in file order.
  virtual std::vector<CString> GetKeyNames();

  const char* IniFile() const { return mIniFile; }
  const char* GetIniFile() { return mIniFile; }
  const char* CurrentSection() const { return mSection; }

 private:
  CString mIniFile;
  CString mSection;
};

#endif  // ZENUTL_INI_FILE_SECTION_H_

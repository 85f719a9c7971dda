// ConfigurationSection: one contract for the library's hierarchical key stores.
//
// A `ConfigurationSection` is a cursor: it always stands on one current section of a store, reads
// and writes keys there, and can move to another section (`ChangeSection`) or, in stores that
// have them, to a child section (`ChangeSubSection`). The stores themselves live elsewhere:
// `IniFileSection` (ini_file_section.h) is flat, `XMLSection` is a tree. A store supplies a small
// set of pure text operations; every typed read and write (booleans, numbers, vectors, string
// lists) is implemented once here on top of them, so that a value has the same text in every
// store. Those text forms are a file format; they are listed below with each operation.
//
// Error contract: nothing here throws for bad or missing data. Reads answer false, 0 or a shorter
// result for a missing key or text that does not convert; writes answer what the store's
// `WriteKey` answered, and the void vector writes drop that answer. Every operation that returns a
// `ConfigurationSection*` hands over a new heap object owned by the caller; null means that the
// store refused or does not support the request. `ConfigurationException` (exception.h) is the
// exception type offered to users of the stores; no operation here throws it.
//
// Routing inside the base class: every base read goes through `ReadKey(key, CString&)`; every base
// write ends in `WriteKey(key, const char*)`, except `WriteKey(key, const std::wstring&)`, which
// forwards to `WriteKey(key, const wchar_t*)`. A store that overrides some overloads of `ReadKey`
// or `WriteKey` should say `using ConfigurationSection::ReadKey;` to keep the others visible.
//
// A section object and its copies are used from one thread at a time; nothing here locks.
#ifndef ZENUTL_CONFIGURATION_SECTION_H_
#define ZENUTL_CONFIGURATION_SECTION_H_

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "zenutl/cstring.h"

class ConfigurationSection {
 public:
  ConfigurationSection() = default;
  ConfigurationSection(const ConfigurationSection&) = default;
  ConfigurationSection& operator=(const ConfigurationSection&) = default;
  virtual ~ConfigurationSection();

  // --- Position ---------------------------------------------------------------------------

  // A second cursor on the same data and section; null if the store can't copy.
  virtual ConfigurationSection* Copy() const = 0;
  // Moves this cursor to the section `name`.
  virtual void ChangeSection(const char* name) = 0;
  // Moves to the child `name` (the `index`-th of that name); false, and no move, if absent.
  virtual bool ChangeSubSection(const char* name, int index) = 0;
  virtual bool ChangeSubSection(const char* name) = 0;
  // `Copy`, then `ChangeSection(name)` on the copy; null only if `Copy` gave null.
  virtual ConfigurationSection* CopyAndChangeSection(const char* name) const;
  // `Copy`, then `ChangeSubSection` on the copy; null (and the copy destroyed) when that answers
  // false. This object never moves. The indexed form is not const.
  virtual ConfigurationSection* CopyAndChangeSubSection(const char* name, int index);
  virtual ConfigurationSection* CopyAndChangeSubSection(const char* name) const;
  // Creates or opens the child `name`; a new cursor on it, or null where unsupported.
  virtual ConfigurationSection* CreateSubSection(const char* name, int index) const = 0;
  virtual ConfigurationSection* CreateSubSection(const char* name) const = 0;
  // A new vector of cursors on every child named `name`, owned by the caller. The base answers
  // null: the store doesn't list children.
  virtual std::vector<boost::shared_ptr<ConfigurationSection> >* GetAllSubSections(
      const char* name) const;
  // The number of children named `name`. The base answers -1: the store doesn't count.
  virtual int NumSubSections(const char* name) const;
  virtual bool SupportsSubSections() const = 0;

  // --- Store maintenance --------------------------------------------------------------------

  virtual bool DeleteKey(const char* key) = 0;
  virtual bool DeleteSection() = 0;
  virtual bool Flush() const = 0;
  virtual bool IsEmpty() const = 0;
  virtual bool HasSection(const char* name, int index) const = 0;
  virtual bool HasKey(const char* key) const = 0;

  // --- Typed reads ------------------------------------------------------------------------
  // A missing key answers false (or 0) and leaves the output alone unless told otherwise.

  // "0" reads as false; any other text, the empty text, "0.0" and "false" included, reads true.
  virtual bool ReadBool(const char* key, bool& value) const;
  // Semicolon-separated; each token differing from "0" is true. Same rules as ReadIntVector.
  virtual bool ReadBoolVector(const char* key, std::vector<bool>& values) const;
  // Separator-tolerant parse (point or comma). The converted prefix is stored even when the
  // answer is false; true only if the whole text converted: "2.5x" => 2.5 stored, false.
  virtual bool ReadFloat(const char* key, float& value) const;
  // Semicolon-separated list. An empty text answers true and leaves `values` as it was (the old
  // contents survive); otherwise `values` is cleared and filled up to the first token that does
  // not convert, and the answer is still true: "1;2;x;4" => {1, 2}, true.
  virtual bool ReadFloatVector(const char* key, std::vector<float>& values) const;
  // 1-based array form: values go to `out[1]`, `out[2]`, ... and the count is returned (0 for a
  // missing key). Up to `n + 1` values are stored, so `out` needs `n + 2` places: with n = 2,
  // "1;2;3;4" stores out[1..3] and returns 3. A token that does not convert whole ends the list
  // uncounted; the empty text counts as one value, 0.
  virtual int ReadFloatVector(const char* key, float* out, int n) const;
  // As ReadFloat.
  virtual bool ReadDouble(const char* key, double& value) const;
  // As the array form of ReadFloatVector.
  virtual int ReadDoubleVector(const char* key, double* out, int n) const;
  // Base 10; stored and true only if the whole text converted ("12.5" => false, nothing stored).
  // Leading blanks are allowed, the empty text reads as 0, and values beyond the range of `int`
  // clamp to its limits.
  virtual bool ReadInt(const char* key, int& value) const;
  // As ReadFloatVector (vector form), each token converted as by ReadInt.
  virtual bool ReadIntVector(const char* key, std::vector<int>& values) const;

  // --- Text reads ---------------------------------------------------------------------------

  // Fills the caller's buffer of `size` wide characters; the store defines how a long text is cut.
  virtual bool ReadKey(const char* key, wchar_t* buffer, unsigned int size) const = 0;
  // Copies the first min(size, length) characters and writes the terminator just after them,
  // i.e. at `buffer[size]` for a long text: pass one less than the buffer's size.
  virtual bool ReadKey(const char* key, char* buffer, unsigned int size) const;
  virtual bool ReadKey(const char* key, std::wstring& value) const = 0;
  // Replaces `value` with the whole text; a missing key leaves it untouched.
  virtual bool ReadKey(const char* key, std::string& value) const;
  virtual bool ReadKey(const char* key, CString& value) const = 0;
  // Splits on `separator` with no unescaping and returns the number of elements: a missing key
  // returns 0 with `values` untouched; otherwise `values` is cleared, the empty text gives 0,
  // and "a;;" gives {"a", "", ""}.
  virtual int ReadStringVector(const char* key, std::vector<CString>& values, char separator) const;

  // --- Typed writes -------------------------------------------------------------------------

  // "1" or "0".
  virtual bool WriteBool(const char* key, bool value);
  // "1;0;1": as WriteIntVector with 1 and 0.
  virtual void WriteBoolVector(const char* key, const std::vector<bool>& values);
  // Six significant digits with a point whatever the locale: 0.5 => "0.5",
  // 1234567.0 => "1.23457e+06".
  virtual bool WriteFloat(const char* key, double value);
  // 1-based: writes `values[1]` to `values[n]` as "%g" joined by ';', always with a point.
  // `values[0]` is never read; `values[1]` is written even for n = 0, so n >= 1 is expected.
  virtual void WriteDoubleVector(const char* key, const double* values, unsigned int n);
  // "%g" joined by ';', printed by the C runtime, so the decimal separator is that of the
  // runtime's current LC_NUMERIC ("1,5;2" under a comma locale). The readers accept both.
  virtual void WriteFloatVector(const char* key, const std::vector<float>& values);
  // As WriteDoubleVector.
  virtual void WriteFloatVector(const char* key, const float* values, unsigned int n);
  // "%d".
  virtual bool WriteInt(const char* key, int value);
  // "%d" joined by ';'; an empty vector writes the empty text.
  virtual void WriteIntVector(const char* key, const std::vector<int>& values);
  // Elements joined by `separator` with no escaping; an empty list writes the empty text.
  virtual bool WriteStringVector(const char* key, const std::vector<CString>& values,
                                 char separator);

  // --- Text writes --------------------------------------------------------------------------

  virtual bool WriteKey(const char* key, const std::wstring& value);
  virtual bool WriteKey(const char* key, const std::string& value);
  virtual bool WriteKey(const char* key, const wchar_t* value) = 0;
  virtual bool WriteKey(const char* key, const char* value) = 0;

  // Copies this section into `target`; false where the store can't.
  virtual bool WriteToSection(ConfigurationSection* target) const = 0;
};

// Helpers over any ConfigurationSection.
namespace ConfigurationSectionUtilities {

// Creates or opens the nested section along `path` ('/' between components), starting at
// `section`, and returns a new cursor on the last one (owned by the caller). The empty path asks
// for a child with the empty name. Null if a step was refused. Paths of more than one component
// need a store whose SupportsSubSections() is true.
ConfigurationSection* CreateSubSection(const ConfigurationSection* section, const char* path);

// Whether every component of `path` exists, each looked up with the same `index`. The empty path
// answers true. `section` itself never moves.
bool HasSubSection(const ConfigurationSection* section, const char* path, int index);

// As ConfigurationSection::WriteStringVector, on std::string, through WriteKey(std::string).
bool WriteStringVector(ConfigurationSection* section, const char* key,
                       const std::vector<std::string>& values, char separator);

// As ConfigurationSection::ReadStringVector, on std::string, through ReadKey(std::string&).
int ReadStringVector(const ConfigurationSection* section, const char* key,
                     std::vector<std::string>& values, char separator);

}  // namespace ConfigurationSectionUtilities

#endif  // ZENUTL_CONFIGURATION_SECTION_H_

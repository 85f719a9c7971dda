// XMLSection: the ConfigurationSection on an XML document, the library's tree-shaped store.
//
// Sections are elements, keys are attributes of the section's element, sub-sections are child
// elements; values have the text forms of configuration_section.h, so a typed value reads the
// same here as in an INI file. Text, comments and processing instructions are neither read nor
// written, and pass through a save unchanged. Several children may share a name; they are
// addressed by a 1-based index in document order. This is also the configuration file format
// (extension "zxl"):
//
//   <?xml version="1.0" encoding="UTF-8" standalone="no" ?>
//   <Settings LogEvents="1">
//     <Window Left="10" Top="20"/>
//     <Recent File="a.dat"/>
//     <Recent File="b.dat"/>
//   </Settings>
//
// A new or freshly parsed section stands on the document node, which holds no keys: move into
// (`ChangeSubSection`) or create (`CreateSubSection`) the root element first. Any number of
// objects may stand on different nodes of one document; copies (`Copy`, the copy constructor,
// `CreateSubSection`, `GetAllSubSections`) share the document, so a change through one shows in
// all, and the last one to go releases it. The document lives in memory: nothing is written
// until `Flush`, and an object that is never flushed loses its changes.
//
// Section names match element names only when they are plain ASCII: a name with a byte above
// 0x7F matches nothing (so `ChangeSection` with it appends a new element on every call). Narrow
// key names and values are UTF-8, like every narrow text of the library; wide ones are UTF-32.
// Every character of a value that XML 1.0 cannot carry is stored as U+FFFD: the C0 controls
// other than tab, line feed and carriage return, U+FFFE, U+FFFF and unpaired surrogates (bytes
// that are not UTF-8 are read as Latin-1 letters, which XML carries). So "a\x01b" reads back as
// "a\xEF\xBF\xBDb", and no value can make a later `Flush` fail.
// Documents are parsed with the guards of the library's XML parser: nothing outside the document
// is read (no external entity, no network access; only a local external DTD when the caller asks
// for it), entity expansion and the nesting of elements are bounded, and so is the size of the
// input (xml_input_limit.h).
//
// Error contract: reads answer false for a missing key or on the document node. Parsing
// constructors throw `Exception` with the text "An error occurred during parsing\nMessage: "
// followed by the first character of the parser's message; the resource constructor throws
// `Exception` with language string 0xF022 when the resource is missing; `Flush()` throws
// `Exception` ("Not possible to flush this type of XMLSection") on a document that wasn't built
// from a path, and answers false when the file can't be written. DOM errors after construction
// are not caught: a key or section name that is not a legal XML name throws
// `xercesc::DOMException` from the write that tried it. Objects on one document belong to one
// thread at a time; nothing here locks.
#ifndef ZENUTL_XML_SECTION_H_
#define ZENUTL_XML_SECTION_H_

#include <xercesc/util/XercesDefs.hpp>

#include <boost/shared_ptr.hpp>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "zenutl/configuration_section.h"
#include "zenutl/cstring.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMNode;
XERCES_CPP_NAMESPACE_END

class XMLInputStream;
struct XMLDocumentState;

// A saved position of an XMLSection; see GetCurrentSection and SetCurrentSection.
struct CurrentNode {
  xercesc::DOMNode* mpNode;
};

class XMLSection : public ConfigurationSection {
 public:
  // XMLPlatformUtils::Initialize and Terminate, for callers that use Xerces directly. Every
  // constructor of this class also initialises Xerces once for the process, by itself, and
  // terminates it when the process exits.
  static void Initialize();
  static void Terminate();
  // "zxl", the conventional file extension of the format, without a dot.
  static CString ZentricsXMLExtension();
  // Parses `text` (as with a stream, with the external DTD loaded if it is a local file) into a
  // new section owned by the caller. Throws the parse Exception for malformed text.
  static XMLSection* CreateXMLSectionFromString(const char* text);

  // A new empty document, with no file name.
  XMLSection();
  // The document in the file `path` (Windows or Linux form). A missing file gives an empty
  // document that `Flush()` will create; the path is always kept for `Flush()`. A file that is
  // there but can't be read now (no permission, no file handles left, a folder) also gives an
  // empty document, but `Flush()` then answers false and never replaces it.
  // `loadExternalDtd` loads an external DTD named by the document when it is a regular file on
  // this machine (a relative name is taken from the document's folder); any other DTD fails the
  // parse, and without `loadExternalDtd` the DTD is not looked at. An external entity, general
  // or parameter, always fails the parse: its file is never opened.
  XMLSection(const char* path, bool loadExternalDtd);
  // The document read from the stream's current position to its end; no file name.
  XMLSection(std::istream& stream, bool loadExternalDtd);
  // The document read from the library stream, which must stay valid during the call.
  XMLSection(XMLInputStream* stream, bool loadExternalDtd);
  // The document held in binary resource `id` (its low 16 bits) of type 23 of the application's
  // resource module, the one selected with LanguageString::SetResourceInstance.
  XMLSection(unsigned int id, bool loadExternalDtd);
  // Shares the other's document and takes its position.
  XMLSection(const XMLSection& other);
  ~XMLSection() override;

  using ConfigurationSection::ReadKey;
  using ConfigurationSection::WriteKey;

  // A second cursor on the same document and position; no deep copy.
  ConfigurationSection* Copy() const override;
  // Moves to the first element of that name among the siblings; creates and appends one if there
  // is none. On the document node, which has no siblings, nothing happens.
  void ChangeSection(const char* name) override;
  // Moves to the first (or the `index`-th, from 1) child element of that name; false and no
  // move if there is none. Index 0 never matches.
  bool ChangeSubSection(const char* name, int index) override;
  bool ChangeSubSection(const char* name) override;
  // A new section on the `index`-th child of that name (children of any kind count, so "#text"
  // finds text nodes); if there are fewer, exactly one new element is appended, however large
  // `index` is. The document changes although the operation is const; this object doesn't move.
  ConfigurationSection* CreateSubSection(const char* name, int index) const override;
  ConfigurationSection* CreateSubSection(const char* name) const override;
  // Sections on every child of that name, of any kind, in order; an empty vector, never null.
  std::vector<boost::shared_ptr<ConfigurationSection> >* GetAllSubSections(
      const char* name) const override;
  // The number of children of that name, of any kind.
  int NumSubSections(const char* name) const override;
  bool SupportsSubSections() const override;  // true

  // Removes the attribute; false if it wasn't there or the position holds no keys.
  bool DeleteKey(const char* key) override;
  // Removes the current element from its parent and moves to the parent; true. The removed
  // subtree stays in memory with the document; other sections standing in it are not told. False,
  // and nothing changes, on the document node.
  bool DeleteSection() override;
  // Writes the whole document, pretty-printed, to the file the object was built from, replacing
  // it in one step. See the error contract above.
  bool Flush() const override;
  // Writes the whole document, pretty-printed, into the stream; the serialiser's result.
  bool Flush(std::ostream& stream) const;
  // Appends the whole document, or with `currentNodeOnly` the current node and its subtree,
  // pretty-printed, to `text` in UTF-8 (whatever the file's encoding), and then removes every line
  // feed from `text`.
  bool Flush(CString& text, bool currentNodeOnly) const;
  // False if the position has children of any kind; otherwise true when it has no attributes.
  bool IsEmpty() const override;
  // Whether the `index`-th child element (from 1) of that name exists; -1 asks for any.
  bool HasSection(const char* name, int index) const override;
  bool HasKey(const char* key) const override;

  // Copies min(size, length) characters and terminates the buffer just after them, which is
  // `buffer[size]` for a long value: pass one less than the buffer's size.
  bool ReadKey(const char* key, wchar_t* buffer, unsigned int size) const override;
  bool ReadKey(const char* key, char* buffer, unsigned int size) const override;
  bool ReadKey(const char* key, std::wstring& value) const override;
  bool ReadKey(const char* key, std::string& value) const override;
  bool ReadKey(const char* key, CString& value) const override;
  // As the base ReadInt, except that `value` is stored even when the answer is false:
  // "12x" => 12 stored, false.
  bool ReadInt(const char* key, int& value) const override;

  // Sets the attribute, creating it if needed; true. False on the document node, which holds
  // no keys.
  bool WriteKey(const char* key, const wchar_t* value) override;
  bool WriteKey(const char* key, const char* value) override;
  bool WriteInt(const char* key, int value) override;

  // Copies the current section's keys and every child element below it, recursively, into
  // `target`, whose own sub-sections are created by name and index, so that repeated names
  // keep their number and order. A target that refuses a sub-section (an IniFileSection) gets
  // what it can hold: the keys of the current section. True.
  bool WriteToSection(ConfigurationSection* target) const override;

  // The position, to be restored later with SetCurrentSection. The pointer stays this object's.
  CurrentNode* GetCurrentSection() const;
  // Moves to the position saved in `node`, which must lie in this object's document.
  void SetCurrentSection(CurrentNode* node);

 private:
  // Takes the other's position and document, releasing this object's own.
  XMLSection& operator=(const XMLSection& other);
  bool WriteToSection(const CurrentNode* node, ConfigurationSection* target) const;
  // A new section on this document standing on `node`.
  XMLSection* SectionOn(xercesc::DOMNode* node) const;
  void AdoptDocumentState(XMLDocumentState* state);
  void ReleaseDocumentState();

  XMLDocumentState* mpState;
  CurrentNode mCurrentNode;
  CurrentNode* mpCurrentNode;
};

#endif  // ZENUTL_XML_SECTION_H_

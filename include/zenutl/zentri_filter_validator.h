// Validators for the names and values that users type into the applications' dialogs.
//
// Each class states, for one kind of name, which characters are refused, how long the text may
// be and what is said when it is wrong. A dialog makes one on the stack, asks `IsValid` (or
// `IsValidInput` while the user types) and, on a refusal, shows `GetErrorMessage` or calls
// `Error`, which goes to the host's message box handler (host_dialogs.h). The family is data:
// a subclass only fills in its set of characters, its length and its item name.
//
//   validator                    refused characters    longest  called
//   ZentriFilterValidator        none                  -        (no name)
//   InvestigationNameValidator   \ / : * " ? < > |     -        text 17059
//   NCProjectNameValidator       \ / : * " ? < > |     -        "A project name"
//   FileNameValidator            \ / : * " ? < > |     -        text 17093
//   TessaVariableNameValidator   ~ * ? \ = [ ] $       -        text 17060
//   FloatValidator               a number, see below   -        text 17061
//   NCProjectPathValidator       only a blank text     -        "A project path"
//   NCObservationNameValidator   $ and controls        1023     text 17066
//   NCVariableNameValidator      $ and controls        1023     text 17067
//   DatasetNameValidator         ? * = \ / : * " < > | 8        text 17070
//   NCOrvikModelNameValidator    controls only         1023     text 17071
//
// "Controls" are the codes 1 to 31 except tab, refused by every MaxStringValidator. Bytes above
// 127 are never refused, so UTF-8 text passes as it is. The messages are language strings by
// number (language_string.h); two are fixed English texts: "%s contains non printable
// characters" and "The path cannot be blank.".
//
// Error contract: a verdict is the return value and its text stays in the object until the next
// verdict; nothing throws. A message that would not fit in the 1000-character buffer is cut.
// A null text is judged as an empty one.
#ifndef ZENUTL_ZENTRI_FILTER_VALIDATOR_H_
#define ZENUTL_ZENTRI_FILTER_VALIDATOR_H_

#include "zenutl/cstring.h"

class CWnd;

class ZentriFilterValidator {
 public:
  // `caption` titles the message box of Error; null means language string 17055. It is not
  // copied and must outlive the validator.
  explicit ZentriFilterValidator(const char* caption = nullptr);
  ZentriFilterValidator(const ZentriFilterValidator&) = default;
  ZentriFilterValidator& operator=(const ZentriFilterValidator&) = default;
  virtual ~ZentriFilterValidator();

  // Refuses an empty text (17057 with the item name) and a text holding any of the refused
  // characters (17058 with the item name and the whole set); on success the message is 17056.
  virtual bool IsValid(const char* text);
  // The verdict on a text still being typed: here the same as IsValid. The flag is not used.
  virtual bool IsValidInput(char* text, bool);
  // The text of the last verdict; before any, language string 17054.
  virtual const char* GetErrorMessage() const;
  // Every refused character, for a hint in the dialog.
  virtual CString GetAllIllegalChars() const;

  // The refused characters in their set's order.
  const char* GetIllegalChars() const { return mIllegalChars; }
  // Shows the error message in a message box owned by `parent` with the error icon.
  void Error(CWnd* parent);

 protected:
  void SetIllegalChars(const char* set);
  // What a subclass fills in: its refused characters and how messages call its item.
  void SetRule(const char* illegalChars, const char* itemName);
  // The message is `format` printed with the arguments, cut to fit the buffer.
  void SetErrorMessage(const char* format, ...);
  // The same with the language string `id` as the format. A translated text that would read
  // other arguments than the built-in English one is not used as a format: the English is.
  void SetErrorMessageFromLanguageString(unsigned int id, ...);
  // How messages call the thing under test; "(null)" while no subclass has named it.
  const char* ItemName() const { return mItemName ? mItemName : "(null)"; }

  char mIllegalChars[100];
  char mErrorMessage[1000];
  const char* mItemName;  // not owned
  const char* mCaption;   // not owned, may be null

 private:
  void KeepErrorMessage(const char* text, std::size_t length);
};

class InvestigationNameValidator : public ZentriFilterValidator {
 public:
  explicit InvestigationNameValidator(const char* caption = nullptr);
};

class NCProjectNameValidator : public InvestigationNameValidator {
 public:
  explicit NCProjectNameValidator(const char* caption = nullptr);
};

class FileNameValidator : public ZentriFilterValidator {
 public:
  explicit FileNameValidator(const char* caption = nullptr);
};

class TessaVariableNameValidator : public ZentriFilterValidator {
 public:
  explicit TessaVariableNameValidator(const char* caption = nullptr);
};

// A number, read as ZnString::ToFloat reads it: with a point or a comma, whatever the locale.
class FloatValidator : public ZentriFilterValidator {
 public:
  explicit FloatValidator(const char* caption = nullptr);

  // Refuses what ToFloat can't read: an empty text with 17062, anything else with 17063 and
  // the text itself. A success leaves the message as it was.
  bool IsValid(const char* text) override;
  // While typing: "+" and "-" alone pass; anything else must pass IsValid and use only the
  // decimal separator of the library's current setting (locales.h), so under a point setting
  // "1,5" is valid but no valid input.
  bool IsValidInput(char* text, bool) override;
};

// A project's folder: anything but a blank text (empty or white space only).
class NCProjectPathValidator : public ZentriFilterValidator {
 public:
  explicit NCProjectPathValidator(const char* caption = nullptr);

  // Refuses only a blank text, with "The path cannot be blank."; a success leaves the message
  // as it was.
  bool IsValid(const char* text) override;
};

// The names with a length limit. Besides the refused set, these refuse a text of white space
// only (17064), one longer than the limit (17065 with the item name and the limit; the limit
// itself is allowed) and control codes other than tab.
class MaxStringValidator : public ZentriFilterValidator {
 public:
  bool IsValid(const char* text) override;
  // The set, then the codes 1 to 31 except 9.
  CString GetAllIllegalChars() const override;
  unsigned int GetMaxLength() const { return mMaxLength; }

 protected:
  // Every subclass sets its own limit.
  explicit MaxStringValidator(const char* caption = nullptr);
  void SetRule(const char* illegalChars, unsigned int maxLength, const char* itemName);

  unsigned int mMaxLength;
};

class NCObservationNameValidator : public MaxStringValidator {
 public:
  explicit NCObservationNameValidator(const char* caption = nullptr);
};

class NCVariableNameValidator : public MaxStringValidator {
 public:
  explicit NCVariableNameValidator(const char* caption = nullptr);
};

// The set holds '*' twice; GetIllegalChars gives it so.
class DatasetNameValidator : public MaxStringValidator {
 public:
  explicit DatasetNameValidator(const char* caption = nullptr);
};

class NCOrvikModelNameValidator : public MaxStringValidator {
 public:
  explicit NCOrvikModelNameValidator(const char* caption = nullptr);
};

#endif  // ZENUTL_ZENTRI_FILTER_VALIDATOR_H_

// The validator family: one generic check in the root, one with a length limit, two special
// cases (numbers and project paths), and subclasses that only fill in their data.
#include "zenutl/zentri_filter_validator.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/print_format.h"
#include "language/catalogue_format.h"
#include "zenutl/host_dialogs.h"
#include "zenutl/language_string.h"
#include "zenutl/locales.h"
#include "zenutl/zn_string.h"

namespace {

// Language strings of the messages and item names.
enum : unsigned int {
  kNotCheckedText = 17054,
  kCaptionText = 17055,
  kValidText = 17056,
  kEmptyFormat = 17057,         // item name
  kIllegalCharsFormat = 17058,  // item name, set
  kInvestigationName = 17059,
  kTessaVariableName = 17060,
  kNumberName = 17061,
  kNoNumberFormat = 17062,       // text
  kInvalidNumberFormat = 17063,  // text
  kBlankFormat = 17064,          // item name
  kTooLongFormat = 17065,        // item name, limit
  kObservationName = 17066,
  kVariableName = 17067,
  kDatasetName = 17070,
  kModelName = 17071,
  kFileName = 17093,
};

const char kWindowsNameChars[] = "\\/:*\"?<>|";

bool IsBlank(const char* text) {
  for (; *text; ++text) {
    if (!std::isspace(static_cast<unsigned char>(*text))) return false;
  }
  return true;
}

// The control codes a name may not hold: 1 to 31, tab excepted.
bool IsRefusedControl(unsigned char c) {
  return c >= 1 && c <= 31 && c != '\t';
}

}  // namespace

// --- ZentriFilterValidator

ZentriFilterValidator::ZentriFilterValidator(const char* caption)
    : mItemName(nullptr), mCaption(caption) {
  SetErrorMessage("%s", LanguageString::Get(kNotCheckedText));
  std::memset(mIllegalChars, 0, sizeof(mIllegalChars));
}

ZentriFilterValidator::~ZentriFilterValidator() = default;

bool ZentriFilterValidator::IsValid(const char* text) {
  SetErrorMessage("%s", LanguageString::Get(kValidText));
  if (text == nullptr || *text == 0) {
    SetErrorMessageFromLanguageString(kEmptyFormat, ItemName());
    return false;
  }
  if (std::strpbrk(text, mIllegalChars) != nullptr) {
    SetErrorMessageFromLanguageString(kIllegalCharsFormat, ItemName(), mIllegalChars);
    return false;
  }
  return true;
}

bool ZentriFilterValidator::IsValidInput(char* text, bool) {
  return IsValid(text);
}

const char* ZentriFilterValidator::GetErrorMessage() const {
  return mErrorMessage;
}

CString ZentriFilterValidator::GetAllIllegalChars() const {
  return CString(mIllegalChars);
}

void ZentriFilterValidator::Error(CWnd* parent) {
  const char* caption = mCaption != nullptr ? mCaption : LanguageString::Get(kCaptionText);
  ZnHostDialogs::ShowMessageBox(parent, mErrorMessage, caption,
                                ZnHostDialogs::eOk | ZnHostDialogs::eIconError);
}

void ZentriFilterValidator::SetIllegalChars(const char* set) {
  std::memset(mIllegalChars, 0, sizeof(mIllegalChars));
  std::strncpy(mIllegalChars, set, sizeof(mIllegalChars) - 1);
}

void ZentriFilterValidator::SetRule(const char* illegalChars, const char* itemName) {
  SetIllegalChars(illegalChars);
  mItemName = itemName;
}

void ZentriFilterValidator::SetErrorMessage(const char* format, ...) {
  std::string message;
  va_list args;
  va_start(args, format);
  zenutl::detail::AppendFormatted(message, format, args);
  va_end(args);
  KeepErrorMessage(message.data(), message.size());
}

void ZentriFilterValidator::SetErrorMessageFromLanguageString(unsigned int id, ...) {
  va_list args;
  va_start(args, id);
  const CString message = zenutl::language::FormatLanguageString(id, args);
  va_end(args);
  KeepErrorMessage(message.GetString(), static_cast<std::size_t>(message.GetLength()));
}

// The message buffer is fixed: a long text is cut, never written past the end.
void ZentriFilterValidator::KeepErrorMessage(const char* text, std::size_t length) {
  const std::size_t kept = std::min(length, sizeof(mErrorMessage) - 1);
  std::memcpy(mErrorMessage, text, kept);
  mErrorMessage[kept] = '\0';
}

// --- the plain name validators

InvestigationNameValidator::InvestigationNameValidator(const char* caption)
    : ZentriFilterValidator(caption) {
  SetRule(kWindowsNameChars, LanguageString::Get(kInvestigationName));
}

NCProjectNameValidator::NCProjectNameValidator(const char* caption)
    : InvestigationNameValidator(caption) {
  SetRule(kWindowsNameChars, "A project name");
}

FileNameValidator::FileNameValidator(const char* caption) : ZentriFilterValidator(caption) {
  SetRule(kWindowsNameChars, LanguageString::Get(kFileName));
}

TessaVariableNameValidator::TessaVariableNameValidator(const char* caption)
    : ZentriFilterValidator(caption) {
  SetRule("~*?\\=[]$", LanguageString::Get(kTessaVariableName));
}

// --- FloatValidator

FloatValidator::FloatValidator(const char* caption) : ZentriFilterValidator(caption) {
  mItemName = LanguageString::Get(kNumberName);
}

bool FloatValidator::IsValid(const char* text) {
  if (text == nullptr) text = "";
  float value;
  if (ZnString::ToFloat(text, value)) return true;
  SetErrorMessageFromLanguageString(*text == 0 ? kNoNumberFormat : kInvalidNumberFormat, text);
  return false;
}

bool FloatValidator::IsValidInput(char* text, bool) {
  // A sign alone is how a number starts; it is let through before it is one.
  if (text != nullptr && (std::strcmp(text, "+") == 0 || std::strcmp(text, "-") == 0)) {
    return true;
  }
  if (!IsValid(text)) return false;
  // ToFloat reads either separator; typing must use the one the application has set.
  const char wrongSeparator = Locales::GetDecimalSeparator() == Locales::eDecimalPoint ? ',' : '.';
  return std::strchr(text, wrongSeparator) == nullptr;
}

// --- NCProjectPathValidator

NCProjectPathValidator::NCProjectPathValidator(const char* caption)
    : ZentriFilterValidator(caption) {
  mItemName = "A project path";
}

bool NCProjectPathValidator::IsValid(const char* text) {
  if (text != nullptr && !IsBlank(text)) return true;
  SetErrorMessage("%s", "The path cannot be blank.");
  return false;
}

// --- MaxStringValidator and its names

MaxStringValidator::MaxStringValidator(const char* caption)
    : ZentriFilterValidator(caption), mMaxLength(0) {
  SetIllegalChars("?*=\\$");
}

void MaxStringValidator::SetRule(const char* illegalChars, unsigned int maxLength,
                                 const char* itemName) {
  ZentriFilterValidator::SetRule(illegalChars, itemName);
  mMaxLength = maxLength;
}

bool MaxStringValidator::IsValid(const char* text) {
  if (!ZentriFilterValidator::IsValid(text)) return false;
  if (IsBlank(text)) {
    SetErrorMessageFromLanguageString(kBlankFormat, ItemName());
    return false;
  }
  if (std::strlen(text) > mMaxLength) {
    SetErrorMessageFromLanguageString(kTooLongFormat, ItemName(), mMaxLength);
    return false;
  }
  for (const char* c = text; *c; ++c) {
    if (IsRefusedControl(static_cast<unsigned char>(*c))) {
      SetErrorMessage("%s contains non printable characters", ItemName());
      return false;
    }
  }
  return true;
}

CString MaxStringValidator::GetAllIllegalChars() const {
  CString all(mIllegalChars);
  for (int c = 1; c <= 31; ++c) {
    if (IsRefusedControl(static_cast<unsigned char>(c))) all += static_cast<char>(c);
  }
  return all;
}

NCObservationNameValidator::NCObservationNameValidator(const char* caption)
    : MaxStringValidator(caption) {
  SetRule("$", 1023, LanguageString::Get(kObservationName));
}

NCVariableNameValidator::NCVariableNameValidator(const char* caption)
    : MaxStringValidator(caption) {
  SetRule("$", 1023, LanguageString::Get(kVariableName));
}

DatasetNameValidator::DatasetNameValidator(const char* caption) : MaxStringValidator(caption) {
  SetRule("?*=\\/:*\"<>|", 8, LanguageString::Get(kDatasetName));
}

NCOrvikModelNameValidator::NCOrvikModelNameValidator(const char* caption)
    : MaxStringValidator(caption) {
  SetRule("", 1023, LanguageString::Get(kModelName));
}

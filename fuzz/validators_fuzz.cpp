// Every validator on arbitrary text: invalid UTF-8, control codes, very long texts.
//
// Invariants beyond "no crash": the message always ends inside its buffer, and a text that a
// validator accepts holds none of its refused characters (and, with a limit, is no longer).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "zenutl/zentri_filter_validator.h"

namespace {

void Check(ZentriFilterValidator& validator, std::string text, unsigned int maxLength) {
  const bool valid = validator.IsValid(text.c_str());
  if (std::memchr(validator.GetErrorMessage(), 0, 1000) == nullptr) std::abort();
  if (valid) {
    const CString refused = validator.GetAllIllegalChars();
    if (!refused.IsEmpty() && std::strpbrk(text.c_str(), refused) != nullptr) std::abort();
    if (maxLength != 0 && std::strlen(text.c_str()) > maxLength) std::abort();
  }
  validator.IsValidInput(&text[0], true);
  if (std::memchr(validator.GetErrorMessage(), 0, 1000) == nullptr) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Texts end at their first zero byte, as a C string would.
  std::string text(reinterpret_cast<const char*>(data), size);
  text.push_back('\0');

  FileNameValidator file;
  Check(file, text, 0);
  NCProjectNameValidator project;
  Check(project, text, 0);
  TessaVariableNameValidator tessa;
  Check(tessa, text, 0);
  FloatValidator number;
  Check(number, text, 0);
  NCProjectPathValidator path;
  Check(path, text, 0);
  NCVariableNameValidator variable;
  Check(variable, text, variable.GetMaxLength());
  DatasetNameValidator dataset;
  Check(dataset, text, dataset.GetMaxLength());
  NCOrvikModelNameValidator model;
  Check(model, text, model.GetMaxLength());
  return 0;
}

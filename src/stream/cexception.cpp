#include "zenutl/cexception.h"

#include <algorithm>
#include <cstring>

#include "platform/file_system.h"

CException::~CException() = default;

BOOL CException::GetErrorMessage(char* text, UINT maxText, UINT* helpContext) const {
  if (helpContext != nullptr) *helpContext = 0;
  if (text == nullptr || maxText == 0) return FALSE;
  const CString description = Describe();
  const std::size_t length =
      std::min<std::size_t>(static_cast<std::size_t>(description.GetLength()), maxText - 1);
  std::memcpy(text, description.GetString(), length);
  text[length] = '\0';
  return description.IsEmpty() ? FALSE : TRUE;
}

CString CFileException::Describe() const {
  CString text;
  if (m_lOsError > 0) {
    text = zenutl::platform::SystemErrorText(m_lOsError).c_str();
  } else if (m_cause == invalidFile) {
    text = "The file is not open";
  } else if (m_cause != none) {
    text.Format("File error %d", m_cause);
  }
  if (!text.IsEmpty() && !m_strFileName.IsEmpty())
    text.AppendFormat(": %s", m_strFileName.GetString());
  return text;
}

CString CArchiveException::Describe() const {
  static const char* const kTexts[] = {"",
                                       "Archive error",
                                       "Cannot write to an archive that loads",
                                       "Unexpected end of archive",
                                       "Cannot read from an archive that stores",
                                       "Bad index in archive",
                                       "Bad class in archive",
                                       "Bad schema in archive"};
  if (m_cause < 0 || m_cause > badSchema) return "Archive error";
  CString text(kTexts[m_cause]);
  if (!text.IsEmpty() && !m_strFileName.IsEmpty())
    text.AppendFormat(": %s", m_strFileName.GetString());
  return text;
}

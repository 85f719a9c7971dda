// Implementation of CString and CStringW, instantiated once here for both widths.
#include "zenutl/cstring.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "core/print_format.h"

namespace zenutl {
namespace detail {

std::wstring Utf8ToWide(const std::string& text) {
  std::wstring out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char lead = s[i];
    const int extra = lead < 0x80         ? 0
                      : (lead >> 5) == 6  ? 1
                      : (lead >> 4) == 14 ? 2
                      : (lead >> 3) == 30 ? 3
                                          : -1;
    bool valid = extra >= 0 && i + static_cast<std::size_t>(extra) < n;
    unsigned long code = extra > 0 ? (lead & (0x3Fu >> extra)) : lead;
    for (int k = 1; valid && k <= extra; ++k) {
      const unsigned char next = s[i + static_cast<std::size_t>(k)];
      valid = (next & 0xC0) == 0x80;
      code = (code << 6) | (next & 0x3Fu);
    }
    if (!valid) {
      out += L'\xFFFD';
      ++i;
      continue;
    }
    out += static_cast<wchar_t>(code);
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

std::string WideToUtf8(const std::wstring& text) {
  std::string out;
  out.reserve(text.size());
  for (wchar_t wc : text) {
    auto code = static_cast<unsigned long>(wc);
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | (code >> 6));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0 | (code >> 12));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x110000) {
      out += static_cast<char>(0xF0 | (code >> 18));
      out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += "\xEF\xBF\xBD";
    }
  }
  return out;
}

}  // namespace detail
}  // namespace zenutl

namespace {

std::size_t Length(const char* s) {
  return std::strlen(s);
}
std::size_t Length(const wchar_t* s) {
  return std::wcslen(s);
}

int FoldCase(char ch) {
  return std::tolower(static_cast<unsigned char>(ch));
}
wint_t FoldCase(wchar_t ch) {
  return std::towlower(static_cast<wint_t>(ch));
}
char ToUpper(char ch) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
}
wchar_t ToUpper(wchar_t ch) {
  return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(ch)));
}
char ToLower(char ch) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
}
wchar_t ToLower(wchar_t ch) {
  return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(ch)));
}
bool IsSpace(char ch) {
  return std::isspace(static_cast<unsigned char>(ch)) != 0;
}
bool IsSpace(wchar_t ch) {
  return std::iswspace(static_cast<wint_t>(ch)) != 0;
}

}  // namespace

template <typename CharT>
const CharT* CStringT<CharT>::Blank() {
  static const CharT blank[1] = {0};
  return blank;
}

template <typename CharT>
CStringT<CharT>::CStringT(const CharT* text, int length) {
  if (text && length > 0) text_.assign(text, static_cast<std::size_t>(length));
}

template <typename CharT>
int CStringT<CharT>::Find(CharT ch, int start) const {
  if (start < 0 || start > GetLength()) return -1;
  std::size_t pos = text_.find(ch, static_cast<std::size_t>(start));
  return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <typename CharT>
int CStringT<CharT>::Find(const CharT* sub, int start) const {
  if (!sub || start < 0 || start > GetLength()) return -1;
  std::size_t pos = text_.find(sub, static_cast<std::size_t>(start));
  return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <typename CharT>
int CStringT<CharT>::FindOneOf(const CharT* set) const {
  if (!set || !*set) return -1;
  std::size_t pos = text_.find_first_of(set);
  return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <typename CharT>
int CStringT<CharT>::ReverseFind(CharT ch) const {
  std::size_t pos = text_.rfind(ch);
  return pos == StdString::npos ? -1 : static_cast<int>(pos);
}

template <typename CharT>
CStringT<CharT> CStringT<CharT>::Left(int count) const {
  if (count <= 0) return CStringT();
  return CStringT(text_.substr(0, static_cast<std::size_t>(count)));
}

template <typename CharT>
CStringT<CharT> CStringT<CharT>::Right(int count) const {
  if (count <= 0) return CStringT();
  if (count >= GetLength()) return *this;
  return CStringT(text_.substr(text_.size() - static_cast<std::size_t>(count)));
}

template <typename CharT>
CStringT<CharT> CStringT<CharT>::Mid(int first) const {
  return Mid(first, GetLength());
}

template <typename CharT>
CStringT<CharT> CStringT<CharT>::Mid(int first, int count) const {
  if (first < 0) first = 0;
  if (count < 0) count = 0;
  if (first >= GetLength() || count == 0) return CStringT();
  return CStringT(text_.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(count)));
}

template <typename CharT>
int CStringT<CharT>::Replace(CharT from, CharT to) {
  int count = 0;
  // Replacing a character by itself changes nothing, and the framework counts it as no change.
  if (from == to) return 0;
  for (CharT& ch : text_) {
    if (ch == from) {
      ch = to;
      ++count;
    }
  }
  return count;
}

template <typename CharT>
int CStringT<CharT>::Replace(const CharT* from, const CharT* to) {
  if (!from || !*from) return 0;
  const std::size_t fromLength = Length(from);
  const StdString replacement = to ? to : Blank();
  int count = 0;
  StdString result;
  std::size_t start = 0;
  for (std::size_t pos; (pos = text_.find(from, start)) != StdString::npos;
       start = pos + fromLength) {
    result.append(text_, start, pos - start);
    result += replacement;
    ++count;
  }
  if (count == 0) return 0;
  result.append(text_, start, StdString::npos);
  text_.swap(result);
  return count;
}

template <typename CharT>
int CStringT<CharT>::Remove(CharT ch) {
  const std::size_t before = text_.size();
  text_.erase(std::remove(text_.begin(), text_.end(), ch), text_.end());
  return static_cast<int>(before - text_.size());
}

template <typename CharT>
int CStringT<CharT>::Insert(int index, const CharT* text) {
  if (index < 0) index = 0;
  if (index > GetLength()) index = GetLength();
  if (text) text_.insert(static_cast<std::size_t>(index), text);
  return GetLength();
}

template <typename CharT>
int CStringT<CharT>::Delete(int index, int count) {
  if (index < 0) index = 0;
  if (count > 0 && index < GetLength()) {
    text_.erase(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
  }
  return GetLength();
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::MakeUpper() {
  for (CharT& ch : text_) ch = ToUpper(ch);
  return *this;
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::MakeLower() {
  for (CharT& ch : text_) ch = ToLower(ch);
  return *this;
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::Trim() {
  return TrimRight().TrimLeft();
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::TrimLeft() {
  std::size_t first = 0;
  while (first < text_.size() && IsSpace(text_[first])) ++first;
  text_.erase(0, first);
  return *this;
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::TrimRight() {
  while (!text_.empty() && IsSpace(text_.back())) text_.pop_back();
  return *this;
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::Trim(CharT ch) {
  return TrimRight(ch).TrimLeft(ch);
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::TrimLeft(CharT ch) {
  std::size_t first = 0;
  while (first < text_.size() && text_[first] == ch) ++first;
  text_.erase(0, first);
  return *this;
}

template <typename CharT>
CStringT<CharT>& CStringT<CharT>::TrimRight(CharT ch) {
  while (!text_.empty() && text_.back() == ch) text_.pop_back();
  return *this;
}

template <typename CharT>
int CStringT<CharT>::Compare(const CharT* other) const {
  const CharT* a = text_.c_str();
  const CharT* b = other ? other : Blank();
  for (; *a && *a == *b; ++a, ++b) {
  }
  using Unsigned = typename std::make_unsigned<CharT>::type;
  const auto ua = static_cast<Unsigned>(*a);
  const auto ub = static_cast<Unsigned>(*b);
  return ua < ub ? -1 : ua > ub ? 1 : 0;
}

template <typename CharT>
int CStringT<CharT>::CompareNoCase(const CharT* other) const {
  const CharT* a = text_.c_str();
  const CharT* b = other ? other : Blank();
  for (; *a && FoldCase(*a) == FoldCase(*b); ++a, ++b) {
  }
  const auto fa = static_cast<long>(FoldCase(*a));
  const auto fb = static_cast<long>(FoldCase(*b));
  return fa < fb ? -1 : fa > fb ? 1 : 0;
}

template <typename CharT>
void CStringT<CharT>::Format(const CharT* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
}

template <typename CharT>
void CStringT<CharT>::FormatV(const CharT* format, va_list args) {
  StdString result;
  zenutl::detail::AppendFormatted(result, format, args);
  text_.swap(result);
}

template <typename CharT>
void CStringT<CharT>::AppendFormat(const CharT* format, ...) {
  va_list args;
  va_start(args, format);
  AppendFormatV(format, args);
  va_end(args);
}

template <typename CharT>
void CStringT<CharT>::AppendFormatV(const CharT* format, va_list args) {
  zenutl::detail::AppendFormatted(text_, format, args);
}

template <typename CharT>
CharT* CStringT<CharT>::GetBuffer(int minLength) {
  if (minLength > GetLength()) text_.resize(static_cast<std::size_t>(minLength));
  return &text_[0];
}

template <typename CharT>
CharT* CStringT<CharT>::GetBufferSetLength(int length) {
  text_.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return &text_[0];
}

template <typename CharT>
void CStringT<CharT>::ReleaseBuffer(int newLength) {
  if (newLength < 0) {
    text_.resize(Length(text_.c_str()));
  } else if (static_cast<std::size_t>(newLength) <= text_.size()) {
    text_.resize(static_cast<std::size_t>(newLength));
  }
}

template class CStringT<char>;
template class CStringT<wchar_t>;

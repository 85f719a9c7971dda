// CString and CStringW: the byte and wide strings of the library's interfaces.
//
// The applications pass text to this library as the Windows framework's `CString` (bytes) and
// `CStringW` (`wchar_t`). This is a small value type with the operations and the semantics those
// callers rely on: construction from a null pointer gives an empty text, `Find` answers -1 when
// nothing is found, `Left` and `Mid` clamp instead of failing, `Replace` and `Remove` return how
// many characters or texts they changed, and `GetBuffer`/`ReleaseBuffer` let C code write into
// the text directly. For standard-library interplay use `std::string` and convert explicitly.
//
// Format strings are printf-style with the Windows conventions the callers were written for:
// `%I64d` is a 64-bit integer, `%I32d` a 32-bit one, and `%S`/`%C` take a text or character
// of the other width (wide in `CString::Format`, bytes in `CStringW::Format`). A text of the
// other width is converted through UTF-8 whatever the locale, and only what cannot be converted
// becomes U+FFFD: `CStringW::Format(L"x=%S;", "caf\xC3\xA9")` gives L"x=café;".
//
// Nothing here throws except `std::bad_alloc`. Conversions between the two widths use UTF-8.
#ifndef ZENUTL_CSTRING_H_
#define ZENUTL_CSTRING_H_

#include <cstdarg>
#include <cstddef>
#include <string>
#include <type_traits>

namespace zenutl {
namespace detail {
// UTF-8 <-> wide conversions; invalid bytes become U+FFFD.
std::wstring Utf8ToWide(const std::string& text);
std::string WideToUtf8(const std::wstring& text);
inline std::string ConvertWidth(const std::wstring& text, char) {
  return WideToUtf8(text);
}
inline std::wstring ConvertWidth(const std::string& text, wchar_t) {
  return Utf8ToWide(text);
}
}  // namespace detail
}  // namespace zenutl

template <typename CharT>
class CStringT {
 public:
  typedef CharT XCHAR;
  typedef std::basic_string<CharT> StdString;

  CStringT() = default;
  CStringT(const CharT* text) : text_(text ? text : Blank()) {}  // NOLINT: implicit by design
  CStringT(const CharT* text, int length);
  CStringT(CharT ch, int repeat) : text_(repeat > 0 ? repeat : 0, ch) {}
  CStringT(const StdString& text) : text_(text) {}  // NOLINT: implicit by design
  // Converts from the other width through UTF-8.
  template <typename OtherT,
            typename = typename std::enable_if<!std::is_same<OtherT, CharT>::value>::type>
  explicit CStringT(const CStringT<OtherT>& other)
      : text_(zenutl::detail::ConvertWidth(other.str(), CharT())) {}

  CStringT& operator=(const CharT* text) {
    text_ = text ? text : Blank();
    return *this;
  }
  CStringT& operator=(CharT ch) {
    text_.assign(1, ch);
    return *this;
  }

  int GetLength() const { return static_cast<int>(text_.size()); }
  bool IsEmpty() const { return text_.empty(); }
  void Empty() { text_.clear(); }

  // Index is not checked beyond what the caller promises, as in the framework.
  CharT GetAt(int index) const { return text_[static_cast<std::size_t>(index)]; }
  void SetAt(int index, CharT ch) { text_[static_cast<std::size_t>(index)] = ch; }
  CharT operator[](int index) const { return GetAt(index); }

  operator const CharT*() const { return text_.c_str(); }  // NOLINT: implicit by design
  const CharT* GetString() const { return text_.c_str(); }
  const StdString& str() const { return text_; }

  // Position of the first occurrence at or after `start`, or -1.
  int Find(CharT ch, int start = 0) const;
  int Find(const CharT* sub, int start = 0) const;
  // Position of the first character that is one of `set`, or -1.
  int FindOneOf(const CharT* set) const;
  // Position of the last occurrence of `ch`, or -1.
  int ReverseFind(CharT ch) const;

  // Substrings clamp their arguments to the text: Left(-1) is "", Mid(99) is "".
  CStringT Left(int count) const;
  CStringT Right(int count) const;
  CStringT Mid(int first) const;
  CStringT Mid(int first, int count) const;

  // Replace every occurrence; the result is the number of replacements (0 when `from` and `to`
  // are the same character, since nothing changes).
  int Replace(CharT from, CharT to);
  int Replace(const CharT* from, const CharT* to);
  // Remove every occurrence of `ch`; the result is the number removed.
  int Remove(CharT ch);
  int Insert(int index, const CharT* text);
  int Delete(int index, int count = 1);

  CStringT& MakeUpper();
  CStringT& MakeLower();
  CStringT& Trim();
  CStringT& TrimLeft();
  CStringT& TrimRight();
  CStringT& Trim(CharT ch);
  CStringT& TrimLeft(CharT ch);
  CStringT& TrimRight(CharT ch);

  // Negative, zero or positive like strcmp; CompareNoCase folds with tolower/towlower.
  int Compare(const CharT* other) const;
  int CompareNoCase(const CharT* other) const;

  void Format(const CharT* format, ...);
  void FormatV(const CharT* format, va_list args);
  void AppendFormat(const CharT* format, ...);
  void AppendFormatV(const CharT* format, va_list args);

  CStringT& operator+=(const CStringT& other) {
    text_ += other.text_;
    return *this;
  }
  CStringT& operator+=(const CharT* other) {
    if (other) text_ += other;
    return *this;
  }
  CStringT& operator+=(CharT ch) {
    text_ += ch;
    return *this;
  }

  // Gives a writable buffer of at least `minLength` characters plus a terminator. Call
  // ReleaseBuffer afterwards: with -1 the length becomes that of the zero-terminated text,
  // otherwise `newLength`.
  CharT* GetBuffer(int minLength = 0);
  CharT* GetBufferSetLength(int length);
  void ReleaseBuffer(int newLength = -1);

 private:
  static const CharT* Blank();
  StdString text_;
};

typedef CStringT<char> CString;
typedef CStringT<wchar_t> CStringW;

template <typename CharT>
CStringT<CharT> operator+(const CStringT<CharT>& a, const CStringT<CharT>& b) {
  CStringT<CharT> result(a);
  result += b;
  return result;
}
template <typename CharT>
CStringT<CharT> operator+(const CStringT<CharT>& a, const CharT* b) {
  CStringT<CharT> result(a);
  result += b;
  return result;
}
template <typename CharT>
CStringT<CharT> operator+(const CharT* a, const CStringT<CharT>& b) {
  CStringT<CharT> result(a);
  result += b;
  return result;
}
template <typename CharT>
CStringT<CharT> operator+(const CStringT<CharT>& a, CharT b) {
  CStringT<CharT> result(a);
  result += b;
  return result;
}

template <typename CharT>
bool operator==(const CStringT<CharT>& a, const CStringT<CharT>& b) {
  return a.str() == b.str();
}
template <typename CharT>
bool operator==(const CStringT<CharT>& a, const CharT* b) {
  return a.Compare(b) == 0;
}
template <typename CharT>
bool operator==(const CharT* a, const CStringT<CharT>& b) {
  return b.Compare(a) == 0;
}
template <typename CharT>
bool operator!=(const CStringT<CharT>& a, const CStringT<CharT>& b) {
  return !(a == b);
}
template <typename CharT>
bool operator!=(const CStringT<CharT>& a, const CharT* b) {
  return !(a == b);
}
template <typename CharT>
bool operator!=(const CharT* a, const CStringT<CharT>& b) {
  return !(b == a);
}
template <typename CharT>
bool operator<(const CStringT<CharT>& a, const CStringT<CharT>& b) {
  return a.str() < b.str();
}

extern template class CStringT<char>;
extern template class CStringT<wchar_t>;

#endif  // ZENUTL_CSTRING_H_

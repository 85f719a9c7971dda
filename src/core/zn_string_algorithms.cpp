#include "zenutl/zn_string_algorithms.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <vector>

namespace ZnString {
namespace {

const char* OrEmpty(const char* text) {
  return text ? text : "";
}
const wchar_t* OrEmpty(const wchar_t* text) {
  return text ? text : L"";
}

// ---- Wildcards ----

struct PatternToken {
  enum Kind { kEnd, kLiteral, kAnyOne, kAnyRun };
  Kind kind;
  char literal;
  const char* next;  // the pattern after this token
};

bool IsEscapable(char ch) {
  return ch == '?' || ch == '*';
}

PatternToken ReadToken(const char* pattern) {
  switch (*pattern) {
    case '\0':
      return {PatternToken::kEnd, '\0', pattern};
    case '*':
      return {PatternToken::kAnyRun, '\0', pattern + 1};
    case '?':
      return {PatternToken::kAnyOne, '\0', pattern + 1};
    case '\\':
      if (IsEscapable(pattern[1])) return {PatternToken::kLiteral, pattern[1], pattern + 2};
      return {PatternToken::kLiteral, '\\', pattern + 1};
    default:
      return {PatternToken::kLiteral, *pattern, pattern + 1};
  }
}

char Folded(char ch, bool caseSensitive) {
  return caseSensitive ? ch : static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
}

// The pattern as the token walk reads it, with the one lost escape made explicit: the text that
// follows the first literal after a `*` is read afresh, without an escaping backslash at its
// start, so a `\?` or `\*` there is a wildcard. Literals come folded for a caseless compare.
std::vector<PatternToken> ReadPattern(const char* pattern, bool caseSensitive) {
  std::vector<PatternToken> tokens;
  bool afterStar = false;  // a `*` waits for the literal it is anchored on
  for (PatternToken token = ReadToken(pattern); token.kind != PatternToken::kEnd;
       token = ReadToken(token.next)) {
    if (token.kind == PatternToken::kAnyRun) afterStar = true;
    if (token.kind == PatternToken::kLiteral) {
      token.literal = Folded(token.literal, caseSensitive);
      if (afterStar && token.next[0] == '\\' && IsEscapable(token.next[1])) ++token.next;
      afterStar = false;
    }
    tokens.push_back(token);
  }
  return tokens;
}

// Whether the tokens match the whole text. A `*` matches a run of any length; of all the ways
// to split the text among the stars only the last star's needs trying again, since an earlier
// star's longer run can always be given to the later one instead. So each mismatch moves the
// last star's run on by one character: at most (pattern length) x (text length) steps, where
// trying every way for every star grows exponentially with the number of stars.
bool MatchTokens(const std::vector<PatternToken>& tokens, const char* text, bool caseSensitive) {
  const std::size_t count = tokens.size();
  std::size_t at = 0;
  std::size_t afterLastStar = 0;
  const char* lastStarRunEnd = nullptr;  // null until a star has been met
  while (*text != '\0') {
    if (at < count && tokens[at].kind == PatternToken::kAnyRun) {
      afterLastStar = ++at;
      lastStarRunEnd = text;
    } else if (at < count && (tokens[at].kind == PatternToken::kAnyOne ||
                              tokens[at].literal == Folded(*text, caseSensitive))) {
      ++at;
      ++text;
    } else if (lastStarRunEnd != nullptr) {
      at = afterLastStar;
      text = ++lastStarRunEnd;
    } else {
      return false;
    }
  }
  while (at < count && tokens[at].kind == PatternToken::kAnyRun) ++at;
  return at == count;
}

// ---- Natural order ----

template <typename CharT>
bool IsAsciiDigit(CharT ch) {
  return ch >= '0' && ch <= '9';
}

// Characters compared as text become signed values, as the runtime's char is signed here.
struct Identity {
  int operator()(char ch) const { return static_cast<signed char>(ch); }
  int operator()(wchar_t ch) const { return static_cast<int>(ch); }
};
struct LowerCase {
  int operator()(char ch) const {
    return static_cast<signed char>(std::tolower(static_cast<unsigned char>(ch)));
  }
};

template <typename CharT, typename Transform>
int NaturalCompare(const CharT* a, const CharT* b, Transform transform) {
  // The walk over a common beginning finds every step a tie and goes on in both texts alike, so
  // it may start at the first difference, or at the start of the run of digits that holds it,
  // since a number is weighed whole. Sorted names share long beginnings.
  std::size_t same = 0;
  while (a[same] == b[same] && a[same] != 0) ++same;
  if (IsAsciiDigit(a[same]) || IsAsciiDigit(b[same])) {
    while (same > 0 && IsAsciiDigit(a[same - 1])) --same;
  }
  a += same;
  b += same;
  if (*a == 0) return *b == 0 ? 0 : -1;
  while (*b != 0) {
    if (!IsAsciiDigit(*a) || !IsAsciiDigit(*b)) {
      const int ca = transform(*a);
      const int cb = transform(*b);
      if (ca != cb) return ca < cb ? -1 : 1;
      ++a;
      ++b;
    } else {
      int zerosA = 0;
      int zerosB = 0;
      while (*a == '0') ++a, ++zerosA;
      while (*b == '0') ++b, ++zerosB;
      while (IsAsciiDigit(*a) && *a == *b) ++a, ++b;
      const bool moreA = IsAsciiDigit(*a);
      const bool moreB = IsAsciiDigit(*b);
      if (moreA && !moreB) return 1;
      if (moreB && !moreA) return -1;
      if (!moreA) {
        // Equal values: the one written with more leading zeros is the greater.
        if (zerosA != zerosB) return zerosA > zerosB ? 1 : -1;
      } else {
        // The longer run is the greater number; the first differing digit decides between runs
        // of equal length.
        const int firstDifference = *a < *b ? -1 : 1;
        do {
          ++a;
          ++b;
        } while (IsAsciiDigit(*a) && IsAsciiDigit(*b));
        if (IsAsciiDigit(*a)) return 1;
        if (IsAsciiDigit(*b)) return -1;
        return firstDifference;
      }
    }
    if (*a == 0) return *b == 0 ? 0 : -1;
  }
  return *a != 0 ? 1 : 0;
}

}  // namespace

bool WildCardCompare(const char* pattern, const char* text, bool caseSensitive) {
  return MatchTokens(ReadPattern(OrEmpty(pattern), caseSensitive), OrEmpty(text), caseSensitive);
}

int znstrnumbercmp(const char* a, const char* b) {
  return NaturalCompare(OrEmpty(a), OrEmpty(b), Identity());
}

int znstrnumbercmp(const wchar_t* a, const wchar_t* b) {
  return NaturalCompare(OrEmpty(a), OrEmpty(b), Identity());
}

int znstrnumbericmp(const char* a, const char* b) {
  return NaturalCompare(OrEmpty(a), OrEmpty(b), LowerCase());
}

int SeparateList(const char* text, char separator, int maxLength, int count, ...) {
  if (count <= 0) return 0;
  const char* p = OrEmpty(text);
  const int limit = maxLength > 0 ? maxLength : 0;
  int filled = 0;
  va_list buffers;
  va_start(buffers, count);
  for (int i = 0; i < count; ++i) {
    char* buffer = va_arg(buffers, char*);
    int length = 0;
    while (*p != '\0' && *p != separator && length < limit) {
      if (buffer) buffer[length] = *p;
      ++length;
      ++p;
    }
    while (*p != '\0' && *p == separator) ++p;
    if (buffer) buffer[length] = '\0';
    if (length > 0) ++filled;
  }
  va_end(buffers);
  return filled;
}

CString FormatStringVector(const std::vector<CString>& items, const char* separator,
                           const char* lastSeparator, int maxItems, const char* moreFormat) {
  const char* between = separator ? separator : ", ";
  const char* beforeLast = lastSeparator ? lastSeparator : " and ";
  const int n = static_cast<int>(items.size());
  const int m = maxItems < 0 ? n : maxItems;
  CString result;
  if (n == 0) return result;
  const int joined = std::min(n - 2, m - 1);
  for (int i = 0; i < joined; ++i) {
    result += items[static_cast<std::size_t>(i)];
    result += between;
  }
  if (n >= 2 && n <= m) {
    result += items[static_cast<std::size_t>(n - 2)];
    result += beforeLast;
  }
  const int last = std::min(m - 1, n - 1);
  if (last >= 0) result += items[static_cast<std::size_t>(last)];
  if (m < n) {
    if (moreFormat == nullptr) {
      result += between;
      result += "...";
    } else {
      result.AppendFormat(moreFormat, n - m);
    }
  }
  return result;
}

std::vector<CString> FormatStringToVector(const CString& text, const char* separator,
                                          const char* lastSeparator) {
  const CString between = separator ? separator : ", ";
  const CString beforeLast = lastSeparator ? lastSeparator : " and ";
  std::vector<CString> pieces;
  int start = 0;
  if (!between.IsEmpty()) {
    for (int found; (found = text.Find(between, start)) != -1;
         start = found + between.GetLength()) {
      pieces.push_back(text.Mid(start, found - start));
    }
  }
  const CString rest = text.Mid(start);
  if (!rest.IsEmpty()) pieces.push_back(rest);
  if (beforeLast.CompareNoCase(between) != 0) pieces.push_back(rest);
  return pieces;
}

std::vector<int> GetIndexVectorToSort(const std::vector<CString>* wanted,
                                      const std::vector<CString>* present) {
  std::vector<int> order;
  if (wanted == nullptr || present == nullptr) return order;
  std::map<CString, int> indexOf;
  for (std::size_t i = 0; i < present->size(); ++i) {
    indexOf[(*present)[i]] = static_cast<int>(i);
  }
  for (const CString& name : *wanted) {
    const auto found = indexOf.find(name);
    if (found != indexOf.end()) order.push_back(found->second + 1);
  }
  return order;
}

void RearrangeColumns(std::vector<std::vector<CString>>& rows, const std::vector<int>* order) {
  if (order == nullptr) return;
  const std::vector<std::vector<CString>> original = rows;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const std::vector<CString>& before = original[r];
    std::vector<CString>& row = rows[r];
    row.clear();
    row.resize(order->size());
    for (std::size_t i = 0; i < order->size(); ++i) {
      const int column = (*order)[i] - 1;
      if (column >= 0 && static_cast<std::size_t>(column) < before.size()) {
        row[i] = before[static_cast<std::size_t>(column)];
      }
    }
  }
}

CString Replace(CString text, const char* from, const char* to) {
  text.Replace(from, to);
  return text;
}

namespace {

// The text before `found` (all of it when -1); `text` keeps what follows the separator.
CString CutHead(CString& text, int found) {
  if (found == -1) {
    CString head = text;
    text.Empty();
    return head;
  }
  CString head = text.Left(found);
  text = text.Mid(found + 1);
  return head;
}

}  // namespace

CString SplitString(CString& text, char separator) {
  return CutHead(text, text.Find(separator));
}

CString SplitString(CString& text, const char* separators) {
  return CutHead(text, text.FindOneOf(separators));
}

}  // namespace ZnString

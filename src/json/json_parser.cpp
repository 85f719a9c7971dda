// The JSON parser: RFC 8259 text to a json_value tree.
//
// It keeps its own stacks instead of recursing: finished values wait on a value stack (keys on a
// key stack) until their container closes, and then move into it whole, so nesting costs no
// machine stack and every array is allocated once at its final size. The text of waiting strings
// and keys sits in one byte stack beside them, and closed containers wait by value on a stack of
// their own; a string or container gets its heap blocks only as it moves into its container,
// right after the element buffer or beside the member's node.
// So a parsed tree lies in memory in the order in which the writers visit it (objects in key
// order), which makes writing it fast; and reading a string allocates nothing. The input is a
// std::string, whose buffer always ends in a zero byte; the scanners use that byte as a sentinel,
// since no token can continue with it, and tell it from a zero byte in the text by position.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <istream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "json/byte_words.h"
#include "json/json_access.h"
#include "zenutl/json_value.h"

using zenutl::json_detail::Access;
using zenutl::json_detail::Array;
using zenutl::json_detail::HasByte;
using zenutl::json_detail::HasByteBelow;
using zenutl::json_detail::HasHighByte;
using zenutl::json_detail::Object;
using zenutl::json_detail::SkipPlainWords;

namespace {

constexpr std::size_t kMaxDepth = 10000;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The value of a hexadecimal digit, or -1.
int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Bytes that end a run of plain string text: the quote, the backslash, the control bytes (the
// zero sentinel among them) and every byte of a multi-byte UTF-8 sequence.
struct StringStopTable {
  bool stop[256];
  constexpr StringStopTable() : stop() {
    for (int byte = 0; byte < 256; ++byte) stop[byte] = byte < 0x20 || byte >= 0x80;
    stop['"'] = stop['\\'] = true;
  }
};
constexpr StringStopTable kStringStops;

bool StopsString(char c) {
  return kStringStops.stop[static_cast<unsigned char>(c)];
}

// The first byte at or after `at` that StopsString, looking at whole words while they last.
char const* SkipPlainText(char const* at, char const* end) {
  at = SkipPlainWords(at, end, [](std::uint64_t word) {
    return HasByteBelow(word, 0x20) | HasHighByte(word) | HasByte(word, '"') | HasByte(word, '\\');
  });
  while (!StopsString(*at)) ++at;
  return at;
}

// Where the text of a string or key lies in the parser's byte stack.
struct TextSpan {
  std::size_t offset;
  std::size_t size;
};

// Where a closed container waits, held by value, on the parser's container stack.
struct ContainerSlot {
  std::size_t index;
};

// A value read whose container has not closed yet: a scalar, the text of a string, or a closed
// container, without the heap block it gets in the tree. Kept small, since a long array of
// numbers waits whole on the value stack.
using Pending = std::variant<json_value, TextSpan, ContainerSlot>;
constexpr std::size_t kText = 1, kContainer = 2;

class Parser {
 public:
  explicit Parser(std::string const& text)
      : m_begin(text.c_str()), m_at(m_begin), m_end(m_begin + text.size()) {}

  json_value Parse() {
    SkipBlanks();
    bool complete = StartValue();
    for (;;) {
      if (!complete) {
        complete = StartValue();
      } else if (m_open.empty()) {
        SkipBlanks();
        if (m_at != m_end) Expected(m_at, "the end of the text");
        return Place(m_values.back());
      } else {
        complete = ContinueContainer();
      }
    }
  }

 private:
  struct OpenContainer {
    bool object;
    std::size_t first_value;
    std::size_t first_key;
    std::size_t text_size;        // of the byte stack
    std::size_t container_count;  // on the container stack
  };

  [[noreturn]] void Fail(char const* at, std::string const& problem) const {
    std::size_t line = 1;
    char const* line_start = m_begin;
    for (char const* scan = m_begin; scan != at; ++scan) {
      if (*scan == '\n') {
        ++line;
        line_start = scan + 1;
      }
    }
    const std::string message = problem + " at line " + std::to_string(line) + ", column " +
                                std::to_string(at - line_start + 1);
    throw json_parse_exception(message.c_str());
  }

  [[noreturn]] void Expected(char const* at, char const* what) const {
    std::string found;
    const unsigned char byte = static_cast<unsigned char>(*at);
    if (at == m_end) {
      found = "the end of the text";
    } else if (byte > 0x20 && byte < 0x7F) {
      found = std::string("'") + static_cast<char>(byte) + "'";
    } else {
      static constexpr char kHex[] = "0123456789ABCDEF";
      found = std::string("byte 0x") + kHex[byte >> 4] + kHex[byte & 0xF];
    }
    Fail(at, std::string("expected ") + what + ", found " + found);
  }

  void SkipBlanks() {
    while (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t') ++m_at;
  }

  // Reads a scalar onto the value stack and says true, or opens a container and says false
  // (with the key of its first member read, for an object). Blanks before it are skipped.
  bool StartValue() {
    switch (*m_at) {
      case '[':
        Open(false);
        if (*m_at != ']') return false;
        ++m_at;
        Close();
        return true;
      case '{':
        Open(true);
        if (*m_at != '}') {
          ReadKey();
          return false;
        }
        ++m_at;
        Close();
        return true;
      case '"':
        m_values.emplace_back(ReadString());
        return true;
      case 't':
        return ReadLiteral("true", json_bool{true});
      case 'f':
        return ReadLiteral("false", json_bool{false});
      case 'n':
        return ReadLiteral("null", json_null{});
      default:
        if (*m_at != '-' && !IsDigit(*m_at)) Expected(m_at, "a value");
        ReadNumber();
        return true;
    }
  }

  // After a value inside a container: a comma (then the next key, for an object) says false, the
  // closing bracket closes the container and says true.
  bool ContinueContainer() {
    SkipBlanks();
    const bool object = m_open.back().object;
    if (*m_at == ',') {
      ++m_at;
      SkipBlanks();
      if (object) ReadKey();
      return false;
    }
    if (*m_at != (object ? '}' : ']')) Expected(m_at, object ? "',' or '}'" : "',' or ']'");
    ++m_at;
    Close();
    return true;
  }

  void Open(bool object) {
    if (m_open.size() == kMaxDepth) Fail(m_at, "nesting deeper than 10000 levels");
    m_open.push_back({object, m_values.size(), m_keys.size(), m_texts.size(), m_containers.size()});
    ++m_at;
    SkipBlanks();
  }

  void Close() {
    const OpenContainer open = m_open.back();
    m_open.pop_back();
    const auto first = m_values.begin() + open.first_value;
    std::variant<Array, Object> container;
    if (!open.object) {
      Array& elements = std::get<Array>(container);
      elements.reserve(m_values.end() - first);
      for (auto value = first; value != m_values.end(); ++value) {
        elements.push_back(Place(*value));
      }
    } else {
      FillObject(container.emplace<Object>(), open);
    }
    // The children have their places now; what waited for them goes.
    m_values.erase(first, m_values.end());
    m_texts.resize(open.text_size);
    m_containers.resize(open.container_count);
    m_containers.push_back(std::move(container));
    m_values.emplace_back(ContainerSlot{open.container_count});
  }

  // Moves the members waiting on the stacks into `members` in key order, so that the map's nodes
  // are allocated in the order in which they will be visited, and each is inserted at the end
  // without a search. Of equal keys the one read last is assigned last.
  void FillObject(Object& members, OpenContainer const& open) {
    TextSpan const* const keys = m_keys.data() + open.first_key;
    Pending* const values = m_values.data() + open.first_value;
    const std::size_t count = m_keys.size() - open.first_key;
    m_order.resize(count);
    for (std::size_t i = 0; i < count; ++i) m_order[i] = i;
    auto by_key = [this, keys](std::size_t left, std::size_t right) {
      return Text(keys[left]) < Text(keys[right]);
    };
    if (!std::is_sorted(m_order.begin(), m_order.end(), by_key)) {
      std::stable_sort(m_order.begin(), m_order.end(), by_key);
    }
    for (std::size_t i : m_order) {
      members.insert_or_assign(members.end(), std::string(Text(keys[i])), Place(values[i]));
    }
    m_keys.erase(m_keys.begin() + open.first_key, m_keys.end());
  }

  // A member's key and its colon, and the blanks after them.
  void ReadKey() {
    if (*m_at != '"') Expected(m_at, "a string key");
    m_keys.push_back(ReadString());
    SkipBlanks();
    if (*m_at != ':') Expected(m_at, "':'");
    ++m_at;
    SkipBlanks();
  }

  bool ReadLiteral(char const* word, json_value&& value) {
    for (char const* expected = word; *expected; ++expected, ++m_at) {
      if (*m_at != *expected) Expected(m_at, (std::string("'") + word + "'").c_str());
    }
    m_values.emplace_back(std::move(value));
    return true;
  }

  std::string_view Text(TextSpan span) const { return {m_texts.data() + span.offset, span.size}; }

  // Gives a waiting value its place in the tree: strings and containers get their heap block now.
  json_value Place(Pending& value) {
    switch (value.index()) {
      case kText:
        return Access::Adopt(new std::string(Text(std::get<kText>(value))));
      case kContainer: {
        auto& container = m_containers[std::get<kContainer>(value).index];
        if (auto* elements = std::get_if<Array>(&container)) {
          return Access::Adopt(new Array(std::move(*elements)));
        }
        return Access::Adopt(new Object(std::move(std::get<Object>(container))));
      }
      default:
        return std::move(std::get<json_value>(value));
    }
  }

  // From the opening quote to after the closing one; the text goes onto the byte stack.
  TextSpan ReadString() {
    const std::size_t offset = m_texts.size();
    ReadString(m_texts);
    return {offset, m_texts.size() - offset};
  }
  void ReadString(std::string& text) {
    char const* run = ++m_at;
    for (;;) {
      m_at = SkipPlainText(m_at, m_end);
      const unsigned char byte = static_cast<unsigned char>(*m_at);
      if (byte == '"') break;
      if (byte == '\\') {
        text.append(run, m_at);
        ReadEscape(text);
        run = m_at;
      } else if (byte >= 0x80) {
        SkipUtf8Sequence();
      } else if (m_at == m_end) {
        Expected(m_at, "'\"'");
      } else {
        Fail(m_at, "control character in a string");
      }
    }
    text.append(run, m_at);
    ++m_at;
  }

  // One well-formed UTF-8 sequence of two to four bytes: no overlong forms, no surrogates,
  // nothing above U+10FFFF. The fault is the first byte that cannot belong to such a sequence.
  void SkipUtf8Sequence() {
    const unsigned char lead = static_cast<unsigned char>(*m_at);
    int length = 0;
    unsigned char low = 0x80, high = 0xBF;  // the range of the byte after the lead
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      if (lead == 0xE0) low = 0xA0;
      if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      if (lead == 0xF0) low = 0x90;
      if (lead == 0xF4) high = 0x8F;
    } else {
      Fail(m_at, "invalid UTF-8");
    }
    for (int i = 1; i < length; ++i) {
      const unsigned char byte = static_cast<unsigned char>(m_at[i]);
      if (byte < low || byte > high) Fail(m_at + i, "invalid UTF-8");
      low = 0x80;
      high = 0xBF;
    }
    m_at += length;
  }

  // From the backslash to after the escape; appends what it stands for.
  void ReadEscape(std::string& text) {
    ++m_at;
    char c = *m_at;
    switch (c) {
      case '"':
      case '\\':
      case '/':
        break;
      case 'b':
        c = '\b';
        break;
      case 'f':
        c = '\f';
        break;
      case 'n':
        c = '\n';
        break;
      case 'r':
        c = '\r';
        break;
      case 't':
        c = '\t';
        break;
      case 'u':
        return ReadUnicodeEscape(text);
      default:
        Expected(m_at, "an escape letter");
    }
    text += c;
    ++m_at;
  }

  // From the 'u' of "\uXXXX" (and of a second one for a surrogate pair) to after the digits;
  // appends the character as UTF-8.
  void ReadUnicodeEscape(std::string& text) {
    ++m_at;
    std::uint32_t code = ReadCodeUnit(false);
    if (code >= 0xD800 && code <= 0xDBFF) {
      if (*m_at != '\\') Expected(m_at, "the \\u escape of a low surrogate");
      if (*++m_at != 'u') Expected(m_at, "the \\u escape of a low surrogate");
      ++m_at;
      code = 0x10000 + ((code - 0xD800) << 10) + (ReadCodeUnit(true) - 0xDC00);
    }
    char utf8[4];
    int length;
    if (code < 0x80) {
      utf8[0] = static_cast<char>(code);
      length = 1;
    } else if (code < 0x800) {
      utf8[0] = static_cast<char>(0xC0 | code >> 6);
      length = 2;
    } else if (code < 0x10000) {
      utf8[0] = static_cast<char>(0xE0 | code >> 12);
      length = 3;
    } else {
      utf8[0] = static_cast<char>(0xF0 | code >> 18);
      length = 4;
    }
    for (int i = 1; i < length; ++i) {
      utf8[i] = static_cast<char>(0x80 | ((code >> (6 * (length - 1 - i))) & 0x3F));
    }
    text.append(utf8, length);
  }

  // Four hexadecimal digits. A low surrogate is refused unless `low_surrogate` asks for one, in
  // which case anything else is refused; either way the fault is the digit that decides it.
  std::uint32_t ReadCodeUnit(bool low_surrogate) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i, ++m_at) {
      const int digit = HexValue(*m_at);
      if (digit < 0) Expected(m_at, "a hexadecimal digit");
      code = code << 4 | digit;
      if (i == 0 && low_surrogate && code != 0xD) Expected(m_at, "a low surrogate");
      if (i == 1 && low_surrogate != (code >= 0xDC && code <= 0xDF)) {
        if (low_surrogate) Expected(m_at, "a low surrogate");
        Fail(m_at, "lone low surrogate in a \\u escape");
      }
    }
    return code;
  }

  void ReadNumber() {
    char const* const start = m_at;
    char const* at = m_at;
    const bool negative = *at == '-';
    if (negative) ++at;
    std::uint64_t integer = 0;
    if (*at == '0') {
      ++at;
    } else if (IsDigit(*at)) {
      for (; IsDigit(*at); ++at) integer = integer * 10 + (*at - '0');
    } else {
      Expected(at, "a digit");
    }
    const std::size_t integer_digits = at - start - negative;
    bool integral = true;
    if (*at == '.') {
      integral = false;
      if (!IsDigit(*++at)) Expected(at, "a digit");
      while (IsDigit(*at)) ++at;
    }
    if (*at == 'e' || *at == 'E') {
      integral = false;
      ++at;
      if (*at == '+' || *at == '-') ++at;
      if (!IsDigit(*at)) Expected(at, "a digit");
      while (IsDigit(*at)) ++at;
    }
    m_at = at;
    // Up to 15 digits the integer was read exactly and converts exactly.
    if (integral && integer_digits <= 15) {
      const double magnitude = static_cast<double>(integer);
      m_values.emplace_back(json_value(negative ? -magnitude : magnitude));
    } else {
      m_values.emplace_back(json_value(ToDouble(start, at, negative)));
    }
  }

  // The nearest double to a number already checked against the grammar.
  static double ToDouble(char const* start, char const* end, bool negative) {
    double value = 0.0;
    if (std::from_chars(start, end, value).ec == std::errc()) return value;
    // Out of range: beyond the largest double the nearest is an infinity, below the smallest
    // denormal it is zero. Which of the two is told by the order of magnitude.
    const double far =
        DecimalMagnitude(start + negative, end) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -far : far;
  }

  // Roughly log10 of a number's magnitude (the position of its first significant digit), enough
  // to tell numbers far beyond the largest double from those far below the smallest.
  static long DecimalMagnitude(char const* at, char const* end) {
    long magnitude = 0;
    bool significant = false;
    for (; at != end && IsDigit(*at); ++at) {
      significant = significant || *at != '0';
      if (significant) ++magnitude;
    }
    if (at != end && *at == '.') {
      for (++at; at != end && IsDigit(*at); ++at) {
        if (significant) break;
        if (*at != '0')
          significant = true;
        else
          --magnitude;
      }
      while (at != end && IsDigit(*at)) ++at;
    }
    if (at == end) return magnitude;
    ++at;  // the 'e'
    const bool negative_exponent = *at == '-';
    if (*at == '+' || *at == '-') ++at;
    long exponent = 0;
    for (; at != end; ++at) {
      if (exponent < 1000000000) exponent = exponent * 10 + (*at - '0');
    }
    return magnitude + (negative_exponent ? -exponent : exponent);
  }

  char const* const m_begin;
  char const* m_at;
  char const* const m_end;
  std::vector<Pending> m_values;
  std::vector<TextSpan> m_keys;
  std::string m_texts;  // the byte stack of waiting strings and keys
  std::vector<std::variant<Array, Object>> m_containers;
  std::vector<OpenContainer> m_open;
  std::vector<std::size_t> m_order;  // scratch of FillObject
};

}  // namespace

json_value json_value::parse(std::string const& text) {
  return Parser(text).Parse();
}

std::istream& operator>>(std::istream& stream, json_value& value) {
  std::istream::sentry ready(stream, true);  // the parser skips blanks itself
  if (!ready) return stream;
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  stream.setstate(std::ios_base::eofbit);
  value = json_value::parse(text);
  return stream;
}

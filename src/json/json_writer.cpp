// The compact and indented text of a json_value.
//
// Both forms come from one walk over the tree that keeps its own stack, so a document as deep as
// the parser allows prints without deep recursion. A run of plain string bytes reaches a stream
// in one piece, never split across two chunks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "json/byte_words.h"
#include "json/json_access.h"
#include "json/json_number_text.h"
#include "zenutl/json_value.h"

using zenutl::json_detail::Access;
using zenutl::json_detail::Array;
using zenutl::json_detail::HasByte;
using zenutl::json_detail::HasByteBelow;
using zenutl::json_detail::Object;
using zenutl::json_detail::SkipPlainWords;

namespace {

// Text is gathered in blocks. For a stream, one block that stays in the processor's cache is
// handed on whenever it is full. For a string, full blocks are kept, growing in size, and copied
// once into a string of the exact size at the end, which costs less than a string that doubles.
class TextOutput {
 public:
  // Gathers all text for TakeText.
  TextOutput() : m_stream(nullptr) { AddBlock(kFirstBlockSize); }
  // Hands the text to `stream`, at the latest at Flush.
  explicit TextOutput(std::ostream& stream) : m_stream(&stream) { AddBlock(kChunkSize); }

  void Put(char c) {
    if (m_cursor == m_limit) MakeRoom(1);
    *m_cursor++ = c;
  }
  void Append(char const* data, std::size_t size) {
    if (size > Room()) return AppendLong(data, size);
    std::memcpy(m_cursor, data, size);
    m_cursor += size;
  }
  // Room for `size` bytes (far less than a block) at the returned cursor; Commit says where they
  // end.
  char* Reserve(std::size_t size) {
    if (size > Room()) MakeRoom(size);
    return m_cursor;
  }
  void Commit(char* end) { m_cursor = end; }

  std::string TakeText() {
    CloseBlock();
    std::size_t total = 0;
    for (Block const& block : m_blocks) total += block.used;
    std::string text;
    text.reserve(total);
    for (Block const& block : m_blocks) text.append(block.bytes.get(), block.used);
    return text;
  }
  void Flush() {
    Send(m_blocks.back().bytes.get(), m_cursor - m_blocks.back().bytes.get());
    m_cursor = m_blocks.back().bytes.get();
  }

 private:
  static constexpr std::size_t kChunkSize = 16 * 1024;
  static constexpr std::size_t kFirstBlockSize = 1024;
  static constexpr std::size_t kLargestBlockSize = 1024 * 1024;

  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t used;
  };

  std::size_t Room() const { return m_limit - m_cursor; }
  void AddBlock(std::size_t size) {
    m_blocks.push_back({std::unique_ptr<char[]>(new char[size]), 0});
    m_cursor = m_blocks.back().bytes.get();
    m_limit = m_cursor + size;
  }
  void CloseBlock() { m_blocks.back().used = m_cursor - m_blocks.back().bytes.get(); }
  // Room for `size` bytes, in a fresh block or, for a stream, after handing the block on.
  void MakeRoom(std::size_t size) {
    if (m_stream) return Flush();
    CloseBlock();
    const std::size_t last = m_limit - m_blocks.back().bytes.get();
    AddBlock(std::max(size, std::min(2 * last, kLargestBlockSize)));
  }
  void AppendLong(char const* data, std::size_t size) {
    if (m_stream && size > kChunkSize) {  // on in one piece, never split across two chunks
      Flush();
      return Send(data, size);
    }
    MakeRoom(size);
    std::memcpy(m_cursor, data, size);
    m_cursor += size;
  }
  void Send(char const* data, std::size_t size) {
    if (m_failed) return;
    m_failed = m_stream->rdbuf()->sputn(data, size) != static_cast<std::streamsize>(size);
    if (m_failed) m_stream->setstate(std::ios_base::badbit);
  }

  std::ostream* const m_stream;
  std::vector<Block> m_blocks;  // for a stream only the one chunk
  char* m_cursor;
  char* m_limit;
  bool m_failed = false;
};

// For each byte of a string: 0 when it is written as it is, otherwise the letter after the
// backslash ('u' for the \u00XX form).
struct EscapeTable {
  char letter[256];
  constexpr EscapeTable() : letter() {
    for (int byte = 0; byte < 0x20; ++byte) letter[byte] = 'u';
    letter[0x7F] = 'u';
    letter['\b'] = 'b';
    letter['\t'] = 't';
    letter['\n'] = 'n';
    letter['\f'] = 'f';
    letter['\r'] = 'r';
    letter['"'] = '"';
    letter['\\'] = '\\';
  }
};
constexpr EscapeTable kEscapes;

// The first byte at or after `at` that needs an escape, looking at whole words while they last.
char const* FindEscape(char const* at, char const* end) {
  at = SkipPlainWords(at, end, [](std::uint64_t word) {
    return HasByteBelow(word, 0x20) | HasByte(word, '"') | HasByte(word, '\\') |
           HasByte(word, 0x7F);
  });
  while (at != end && kEscapes.letter[static_cast<unsigned char>(*at)] == 0) ++at;
  return at;
}

void WriteEscape(TextOutput& out, unsigned char byte) {
  static constexpr char kHex[] = "0123456789abcdef";
  const char letter = kEscapes.letter[byte];
  char* escape = out.Reserve(6);
  escape[0] = '\\';
  escape[1] = letter;
  if (letter != 'u') return out.Commit(escape + 2);
  escape[2] = '0';
  escape[3] = '0';
  escape[4] = kHex[byte >> 4];
  escape[5] = kHex[byte & 0xF];
  out.Commit(escape + 6);
}

void WriteQuoted(TextOutput& out, std::string const& text) {
  char const* at = text.data();
  char const* const end = at + text.size();
  // Short texts, most keys among them, are copied byte by byte as they are checked.
  constexpr std::size_t kShort = 24;
  if (text.size() <= kShort) {
    char* cursor = out.Reserve(kShort + 2);
    *cursor++ = '"';
    while (at != end && kEscapes.letter[static_cast<unsigned char>(*at)] == 0) *cursor++ = *at++;
    if (at == end) *cursor++ = '"';
    out.Commit(cursor);
    if (at == end) return;
  } else {
    out.Put('"');
  }
  for (;;) {
    char const* const stop = FindEscape(at, end);
    out.Append(at, stop - at);
    if (stop == end) break;
    WriteEscape(out, static_cast<unsigned char>(*stop));
    at = stop + 1;
  }
  out.Put('"');
}

void WriteNumber(TextOutput& out, double number) {
  switch (std::fpclassify(number)) {
    case FP_NORMAL: {
      char* text = out.Reserve(zenutl::json_detail::kNumberTextLimit);
      out.Commit(zenutl::json_detail::FormatNumber(number, text));
      break;
    }
    case FP_INFINITE:  // as strings, so that the text stays JSON
      number > 0 ? out.Append("\"+inf\"", 6) : out.Append("\"-inf\"", 6);
      break;
    case FP_ZERO:
    case FP_SUBNORMAL:
      out.Put('0');
      break;
    default:
      out.Append("null", 4);
      break;
  }
}

void WriteScalar(TextOutput& out, json_value const& value) {
  switch (Access::KindOf(value)) {
    case Access::kString:
      return WriteQuoted(out, Access::StringOf(value));
    case Access::kNumber:
      return WriteNumber(out, Access::NumberOf(value));
    case Access::kBool:
      return Access::FlagOf(value) ? out.Append("true", 4) : out.Append("false", 5);
    default:
      return out.Append("null", 4);
  }
}

bool IsContainer(json_value const& value) {
  return Access::KindOf(value) >= Access::kArray;
}

// Walks `root` depth first and tells `writer` what it meets: Scalar(value), OpenArray(),
// CloseArray(), OpenObject(), Key(key) before each member's value, CloseObject(). The scalars
// of one container are written in a tight loop; only a child container costs a trip through
// the stack.
template <class Writer>
void Walk(json_value const& root, Writer& writer) {
  struct Open {
    bool object;
    json_value const* next_element;
    json_value const* end_element;
    Object::const_iterator next_member;
    Object::const_iterator end_member;
  };
  std::vector<Open> open;
  auto enter = [&](json_value const& value) {
    if (Access::KindOf(value) == Access::kArray) {
      writer.OpenArray();
      Array const& elements = Access::ArrayOf(value);
      if (elements.empty()) return writer.CloseArray();
      return open.push_back({false, elements.data(), elements.data() + elements.size(), {}, {}});
    }
    if (Access::KindOf(value) == Access::kObject) {
      writer.OpenObject();
      Object const& members = Access::ObjectOf(value);
      if (members.empty()) return writer.CloseObject();
      return open.push_back({true, nullptr, nullptr, members.begin(), members.end()});
    }
    writer.Scalar(value);
  };
  enter(root);
  while (!open.empty()) {
    Open& top = open.back();
    if (!top.object) {
      json_value const* element = top.next_element;
      for (; element != top.end_element && !IsContainer(*element); ++element) {
        Access::PrefetchBeyond(Access::HeapPayload(*element));
        writer.Scalar(*element);
      }
      if (element == top.end_element) {
        open.pop_back();
        writer.CloseArray();
      } else {
        top.next_element = element + 1;
        enter(*element);
      }
    } else {
      auto member = top.next_member;
      for (; member != top.end_member; ++member) {
        Access::PrefetchBeyond(&*member);
        writer.Key(member->first);
        if (IsContainer(member->second)) break;
        writer.Scalar(member->second);
      }
      if (member == top.end_member) {
        open.pop_back();
        writer.CloseObject();
      } else {
        top.next_member = std::next(member);
        enter(member->second);
      }
    }
  }
}

// {"a":1,"b":[true,null]}: a comma before every item but the first of its container, and a
// member's value right after its key.
class CompactWriter {
 public:
  explicit CompactWriter(TextOutput& out) : m_out(out) {}

  void Scalar(json_value const& value) {
    Separate();
    WriteScalar(m_out, value);
  }
  void OpenArray() { Open('['); }
  void OpenObject() { Open('{'); }
  void CloseArray() { Close(']'); }
  void CloseObject() { Close('}'); }
  void Key(std::string const& key) {
    Separate();
    WriteQuoted(m_out, key);
    m_out.Put(':');
    m_first = true;  // no comma between the key and its value
  }

 private:
  void Separate() {
    if (!m_first) m_out.Put(',');
    m_first = false;
  }
  void Open(char bracket) {
    Separate();
    m_out.Put(bracket);
    m_first = true;
  }
  void Close(char bracket) {
    m_out.Put(bracket);
    m_first = false;
  }

  TextOutput& m_out;
  bool m_first = true;
};

// One item per line, `depth` units in: elements and members each start a line, a closing
// bracket of a container with items starts one too, and empty containers stay "[]" and "{}" on
// the line of their key.
class IndentedWriter {
 public:
  IndentedWriter(TextOutput& out, unsigned int indent) : m_out(out), m_unit(indent) {
    m_line_starts.assign(1 + std::min<std::size_t>(indent * std::size_t{32}, 4096), ' ');
    m_line_starts[0] = '\n';
  }

  void Scalar(json_value const& value) {
    BeforeValue();
    WriteScalar(m_out, value);
  }
  void OpenArray() { Open('[', kArrayOpen); }
  void OpenObject() { Open('{', kKeyDone); }
  void CloseArray() { Close(']'); }
  void CloseObject() { Close('}'); }
  void Key(std::string const& key) {
    if (m_state == kValueDone) m_out.Put(',');
    LineStart();
    WriteQuoted(m_out, key);
    m_out.Append(": ", 2);
    m_state = kKeyDone;
  }

 private:
  // What the last thing written asks of the next value.
  enum State { kValueDone, kArrayOpen, kKeyDone };

  void BeforeValue() {
    if (m_state == kValueDone) m_out.Put(',');
    if (m_state != kKeyDone) LineStart();
    m_state = kValueDone;
  }
  void Open(char bracket, State state) {
    BeforeValue();
    m_out.Put(bracket);
    ++m_depth;
    m_state = state;
  }
  void Close(char bracket) {
    --m_depth;
    if (m_state == kValueDone) LineStart();
    m_out.Put(bracket);
    m_state = kValueDone;
  }
  void LineStart() {
    const std::size_t blanks = m_depth * std::size_t{m_unit};
    if (blanks < m_line_starts.size()) return m_out.Append(m_line_starts.data(), 1 + blanks);
    m_out.Put('\n');
    for (std::size_t left = blanks; left != 0;) {
      const std::size_t piece = std::min(left, m_line_starts.size() - 1);
      m_out.Append(m_line_starts.data() + 1, piece);
      left -= piece;
    }
  }

  TextOutput& m_out;
  unsigned int m_unit;
  std::string m_line_starts;  // a line feed and the blanks of the first levels
  std::size_t m_depth = 0;
  State m_state = kKeyDone;
};

template <class Writer, class... Options>
void WriteTo(std::ostream& stream, json_value const& value, Options... options) {
  std::ostream::sentry ready(stream);
  if (!ready) return;
  TextOutput out(stream);
  Writer writer(out, options...);
  Walk(value, writer);
  out.Flush();
}

template <class Writer, class... Options>
std::string WriteToString(json_value const& value, Options... options) {
  TextOutput out;
  Writer writer(out, options...);
  Walk(value, writer);
  return out.TakeText();
}

}  // namespace

std::string json_value::to_string() const {
  return WriteToString<CompactWriter>(*this);
}

std::ostream& json_value::pretty_print(std::ostream& stream, unsigned int indent) const {
  WriteTo<IndentedWriter>(stream, *this, indent);
  return stream;
}

std::string json_value::to_pretty_string(unsigned int indent) const {
  return WriteToString<IndentedWriter>(*this, indent);
}

std::ostream& operator<<(std::ostream& stream, json_value const& value) {
  WriteTo<CompactWriter>(stream, value);
  return stream;
}

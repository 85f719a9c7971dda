// The compact and indented text of a json_value.
//
// Both forms come from one walk over the tree that keeps its own stack, so a document as deep as
// the parser allows prints without deep recursion. Text is gathered in a buffer: for a string
// result the buffer becomes the string; for a stream it is handed over in chunks, and a run of
// plain string bytes is never split across two chunks.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "json/json_access.h"
#include "json/json_number_text.h"
#include "zenutl/json_value.h"

using zenutl::json_detail::Access;
using zenutl::json_detail::Array;
using zenutl::json_detail::Object;

namespace {

class TextOutput {
 public:
  // Keeps all text in memory, for TakeText.
  TextOutput() : m_stream(nullptr) { Resize(kFirstSize); }
  // Hands the text to `stream` whenever the buffer is full, and at Flush.
  explicit TextOutput(std::ostream& stream) : m_stream(&stream) { Resize(kChunkSize); }

  void Put(char c) {
    if (m_cursor == m_limit) MakeRoom(1);
    *m_cursor++ = c;
  }
  void Append(char const* data, std::size_t size) {
    if (size > Room()) return AppendLong(data, size);
    std::memcpy(m_cursor, data, size);
    m_cursor += size;
  }
  // Room for `size` bytes (at most a chunk) at the returned cursor; Commit says where they end.
  char* Reserve(std::size_t size) {
    if (size > Room()) MakeRoom(size);
    return m_cursor;
  }
  void Commit(char* end) { m_cursor = end; }

  std::string TakeText() {
    m_buffer.resize(m_cursor - m_buffer.data());
    return std::move(m_buffer);
  }
  void Flush() {
    if (!m_failed) {
      const std::streamsize size = m_cursor - m_buffer.data();
      m_failed = m_stream->rdbuf()->sputn(m_buffer.data(), size) != size;
      if (m_failed) m_stream->setstate(std::ios_base::badbit);
    }
    m_cursor = &m_buffer[0];
  }

 private:
  static constexpr std::size_t kFirstSize = 1024;
  static constexpr std::size_t kChunkSize = 64 * 1024;

  std::size_t Room() const { return m_limit - m_cursor; }
  void Resize(std::size_t size) {
    const std::size_t used = m_cursor ? m_cursor - m_buffer.data() : 0;
    m_buffer.resize(size);
    m_cursor = &m_buffer[0] + used;
    m_limit = &m_buffer[0] + size;
  }
  void MakeRoom(std::size_t size) {
    if (m_stream) return Flush();
    Resize(std::max(2 * m_buffer.size(), m_buffer.size() + size));
  }
  void AppendLong(char const* data, std::size_t size) {
    MakeRoom(size);
    if (size <= Room()) {
      std::memcpy(m_cursor, data, size);
      m_cursor += size;
    } else if (!m_failed) {  // longer than a whole chunk: straight to the stream, in one piece
      m_failed = m_stream->rdbuf()->sputn(data, size) != static_cast<std::streamsize>(size);
      if (m_failed) m_stream->setstate(std::ios_base::badbit);
    }
  }

  std::ostream* m_stream;
  std::string m_buffer;
  char* m_cursor = nullptr;
  char* m_limit = nullptr;
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

void WriteQuoted(TextOutput& out, std::string const& text) {
  out.Put('"');
  char const* run = text.data();
  char const* const end = run + text.size();
  for (char const* at = run; at != end; ++at) {
    const char letter = kEscapes.letter[static_cast<unsigned char>(*at)];
    if (letter == 0) continue;
    out.Append(run, at - run);
    run = at + 1;
    char* escape = out.Reserve(6);
    escape[0] = '\\';
    escape[1] = letter;
    if (letter != 'u') {
      out.Commit(escape + 2);
      continue;
    }
    static constexpr char kHex[] = "0123456789abcdef";
    const unsigned char byte = static_cast<unsigned char>(*at);
    escape[2] = '0';
    escape[3] = '0';
    escape[4] = kHex[byte >> 4];
    escape[5] = kHex[byte & 0xF];
    out.Commit(escape + 6);
  }
  out.Append(run, end - run);
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

// Walks `root` depth first and tells `writer` what it meets: Scalar(value), OpenArray(),
// CloseArray(), OpenObject(), Key(key) before each member's value, CloseObject().
template <class Writer>
void Walk(json_value const& root, Writer& writer) {
  struct Open {
    json_value const* container;
    std::size_t next_element;
    Object::const_iterator next_member;
  };
  std::vector<Open> open;
  auto visit = [&](json_value const& value) {
    switch (Access::KindOf(value)) {
      case Access::kArray:
        writer.OpenArray();
        if (Access::ArrayOf(value).empty()) return writer.CloseArray();
        return open.push_back({&value, 0, {}});
      case Access::kObject:
        writer.OpenObject();
        if (Access::ObjectOf(value).empty()) return writer.CloseObject();
        return open.push_back({&value, 0, Access::ObjectOf(value).begin()});
      default:
        return writer.Scalar(value);
    }
  };
  visit(root);
  while (!open.empty()) {
    Open& top = open.back();
    if (Access::KindOf(*top.container) == Access::kArray) {
      Array const& elements = Access::ArrayOf(*top.container);
      if (top.next_element == elements.size()) {
        open.pop_back();
        writer.CloseArray();
      } else {
        visit(elements[top.next_element++]);
      }
    } else if (top.next_member == Access::ObjectOf(*top.container).end()) {
      open.pop_back();
      writer.CloseObject();
    } else {
      auto const& member = *top.next_member++;
      writer.Key(member.first);
      visit(member.second);
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

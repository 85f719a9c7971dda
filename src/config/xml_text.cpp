#include "config/xml_text.h"

#include <cstring>

namespace zenutl {
namespace config {
namespace {

const char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at `p` (before `end`); answers the code point and advances `p`, or
// answers the lead byte as a Latin-1 character when the sequence is broken or overlong.
char32_t DecodeUtf8(const unsigned char*& p, const unsigned char* end) {
  const unsigned char lead = *p;
  if (lead < 0x80) {
    ++p;
    return lead;
  }
  int extra = 0;
  char32_t code = 0;
  char32_t minimum = 0;
  if ((lead & 0xE0) == 0xC0) {
    extra = 1, code = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    extra = 2, code = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    extra = 3, code = lead & 0x07, minimum = 0x10000;
  } else {
    ++p;
    return lead;
  }
  if (end - p <= extra) {
    ++p;
    return lead;
  }
  for (int i = 1; i <= extra; ++i) {
    if ((p[i] & 0xC0) != 0x80) {
      ++p;
      return lead;
    }
    code = (code << 6) | (p[i] & 0x3F);
  }
  if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
    ++p;
    return lead;
  }
  p += extra + 1;
  return code;
}

void AppendUtf16(char32_t code, XmlString& out) {
  if (code >= 0xD800 && code <= 0xDFFF) code = kReplacement;
  if (code > 0x10FFFF) code = kReplacement;
  if (code < 0x10000) {
    out.push_back(static_cast<XMLCh>(code));
  } else {
    code -= 0x10000;
    out.push_back(static_cast<XMLCh>(0xD800 + (code >> 10)));
    out.push_back(static_cast<XMLCh>(0xDC00 + (code & 0x3FF)));
  }
}

// Reads one code point from UTF-16 at `p` (before `end`), advancing `p`.
char32_t DecodeUtf16(const XMLCh*& p, const XMLCh* end) {
  const char32_t unit = *p++;
  if (unit >= 0xD800 && unit <= 0xDBFF && p != end && *p >= 0xDC00 && *p <= 0xDFFF) {
    const char32_t low = *p++;
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }
  if (unit >= 0xD800 && unit <= 0xDFFF) return kReplacement;
  return unit;
}

void AppendUtf8(char32_t code, std::string& out) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (code >> 18)));
    out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

std::size_t Length(const XMLCh* text) {
  std::size_t length = 0;
  if (text) {
    while (text[length]) ++length;
  }
  return length;
}

bool IsAscii(const char* text, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  }
  return true;
}

}  // namespace

XmlString XmlFromUtf8(const char* text) {
  XmlString out;
  if (!text) return out;
  const std::size_t length = std::strlen(text);
  out.reserve(length);
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* end = p + length;
  while (p != end) AppendUtf16(DecodeUtf8(p, end), out);
  return out;
}

XmlString XmlFromWide(const wchar_t* text) {
  XmlString out;
  if (!text) return out;
  for (; *text; ++text) AppendUtf16(static_cast<char32_t>(*text), out);
  return out;
}

void AppendUtf8(const XMLCh* text, std::size_t length, std::string& out) {
  const XMLCh* end = text + length;
  out.reserve(out.size() + length);
  while (text != end) {
    if (*text < 0x80) {
      out.push_back(static_cast<char>(*text++));
    } else {
      AppendUtf8(DecodeUtf16(text, end), out);
    }
  }
}

std::string Utf8FromXml(const XMLCh* text) {
  std::string out;
  if (text) AppendUtf8(text, Length(text), out);
  return out;
}

std::wstring WideFromXml(const XMLCh* text) {
  std::wstring out;
  if (!text) return out;
  const XMLCh* end = text + Length(text);
  out.reserve(static_cast<std::size_t>(end - text));
  while (text != end) out.push_back(static_cast<wchar_t>(DecodeUtf16(text, end)));
  return out;
}

XmlString XmlContentFromUtf8(const char* text) {
  XmlString content = XmlFromUtf8(text);
  ReplaceCharactersXmlCannotCarry(content);
  return content;
}

XmlString XmlContentFromWide(const wchar_t* text) {
  XmlString content = XmlFromWide(text);
  ReplaceCharactersXmlCannotCarry(content);
  return content;
}

void ReplaceCharactersXmlCannotCarry(XmlString& text) {
  const std::size_t length = text.size();
  for (std::size_t i = 0; i < length; ++i) {
    const XMLCh unit = text[i];
    if (unit >= 0x20 && unit < 0xD800) continue;  // nearly all text
    if (unit == 0x09 || unit == 0x0A || unit == 0x0D) continue;
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      ++i;  // a whole pair
      continue;
    }
    if (unit >= 0xE000 && unit <= 0xFFFD) continue;
    text[i] = static_cast<XMLCh>(kReplacement);
  }
}

XmlName::XmlName(const char* name) {
  const std::size_t length = name ? std::strlen(name) : 0;
  if (length < 64 && IsAscii(name, length)) {
    for (std::size_t i = 0; i < length; ++i) mStack[i] = static_cast<XMLCh>(name[i]);
    mStack[length] = 0;
  } else {
    mStack[0] = 0;
    mHeap = XmlFromUtf8(name);  // never empty here: the empty name stays on the stack
  }
}

}  // namespace config
}  // namespace zenutl

// HtmlUtilities. EscapeToHtml and UrlEncode map each byte on its own, so they are one pass each;
// UrlDecode replaces every occurrence of a token at once, which a single pass would not
// reproduce ("%41%%41" gives "A\n", since the second "%41" goes with the first), so it keeps
// that loop.
#include "zenutl/html_utilities.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// The escaped "%" while the decoding loop still looks for percent signs.
const char kPercentPlaceholder = static_cast<char>(0xB6);

bool IsAsciiAlphanumeric(unsigned char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Replaces every occurrence of `token` at or after `from`, left to right, without looking at
// what a replacement wrote.
void ReplaceAllFrom(std::string& text, std::size_t from, const std::string& token,
                    const std::string& replacement) {
  std::string result = text.substr(0, from);
  std::size_t position = from;
  for (std::size_t found; (found = text.find(token, position)) != std::string::npos;) {
    result.append(text, position, found - position);
    result += replacement;
    position = found + token.size();
  }
  result.append(text, position, std::string::npos);
  text.swap(result);
}

}  // namespace

namespace HtmlUtilities {

void EscapeToHtml(CString& text) {
  std::string escaped;
  escaped.reserve(text.GetLength());
  for (const char c : text.str()) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else if (byte >= 0xA1) {
      escaped += "&#" + std::to_string(byte) + ";";
    } else {
      escaped += c;
    }
  }
  text = CString(escaped);
}

CString UrlEncode(CString text) {
  std::string encoded;
  encoded.reserve(text.GetLength());
  for (const char c : text.str()) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (IsAsciiAlphanumeric(byte)) {
      encoded += c;
    } else {
      char escape[4];
      std::snprintf(escape, sizeof(escape), "%%%2x", byte);
      encoded += escape;
    }
  }
  return CString(encoded);
}

CString UrlDecode(CString text) {
  text.Replace("file:///", "");
  std::string decoded = text.str();
  for (std::size_t percent; (percent = decoded.find('%')) != std::string::npos;) {
    const std::string token = decoded.substr(percent, 3);
    const std::string digits = token.substr(1);
    const char byte = static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
    std::string replacement;
    if (byte == '%') {
      replacement = kPercentPlaceholder;
    } else if (byte != 0) {
      replacement = byte;
    }
    // No "%" stands before `percent`, so the search can start there.
    ReplaceAllFrom(decoded, percent, token, replacement);
  }
  for (char& c : decoded) {
    if (c == kPercentPlaceholder) c = '%';
  }
  return CString(decoded);
}

void StripHeaderAndBodyTags(CString& text) {
  int end = text.Find("</body>");
  if (end < 0) end = text.Find("</BODY>");
  if (end >= 0) text = text.Left(end);
  int start = text.Find("<body>");
  if (start < 0) start = text.Find("<BODY>");
  if (start >= 0) text = text.Mid(start + 6);
}

CString ToHTMLColor(unsigned long color, bool quoted) {
  const unsigned long red = color & 0xFF;
  const unsigned long green = (color >> 8) & 0xFF;
  const unsigned long blue = (color >> 16) & 0xFF;
  CString html;
  html.Format(quoted ? "\"#%.6lx\"" : "#%.6lx", (red << 16) | (green << 8) | blue);
  return html;
}

}  // namespace HtmlUtilities

#include "zenutl/zn_std_string.h"

#include <sstream>

namespace ZnStdString {
namespace {

std::string CutAt(std::string& text, std::string::size_type found) {
  if (found == std::string::npos) {
    std::string head;
    head.swap(text);
    return head;
  }
  std::string head = text.substr(0, found);
  text.erase(0, found + 1);
  return head;
}

int Collate(const std::string& a, const std::string& b, const std::locale& locale) {
  const std::collate<char>& collate = std::use_facet<std::collate<char>>(locale);
  return collate.compare(a.data(), a.data() + a.size(), b.data(), b.data() + b.size());
}

}  // namespace

std::string SplitString(std::string& text, char separator) {
  return CutAt(text, text.find(separator));
}

std::string SplitString(std::string& text, const char* separators) {
  if (separators == nullptr || *separators == '\0') return CutAt(text, std::string::npos);
  return CutAt(text, text.find_first_of(separators));
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> pieces;
  std::string::size_type start = 0;
  if (!separator.empty()) {
    for (std::string::size_type found; (found = text.find(separator, start)) != std::string::npos;
         start = found + separator.size()) {
      pieces.push_back(text.substr(start, found - start));
    }
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

std::string Join(const std::vector<std::string>& pieces, const std::string& separator) {
  std::ostringstream joined;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (i > 0) joined << separator;
    joined << pieces[i];
  }
  return joined.str();
}

int zncollate(const std::string& a, const std::string& b, const std::locale& locale) {
  return Collate(a, b, locale);
}

int znicollate(const std::string& a, const std::string& b, const std::locale& locale) {
  const std::ctype<char>& ctype = std::use_facet<std::ctype<char>>(locale);
  std::string upperA = a;
  std::string upperB = b;
  ctype.toupper(&upperA[0], &upperA[0] + upperA.size());
  ctype.toupper(&upperB[0], &upperB[0] + upperB.size());
  return Collate(upperA, upperB, locale);
}

const std::string& Empty() {
  static const std::string empty;
  return empty;
}

}  // namespace ZnStdString

// Natural ordering of names with numbers in them, on arbitrary texts.
//
// Input: up to three texts separated by zero bytes. Invariants beyond "no crash", for both the
// case-sensitive and the case-insensitive compare: the answer is -1, 0 or 1; every text equals
// itself; swapping the texts flips the answer; the order is transitive, so a sort with it is
// consistent. The wide compare agrees with the narrow one on ASCII texts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "zenutl/zn_string_algorithms.h"

namespace {

typedef int (*Compare)(const char*, const char*);

int WideCompare(const char* a, const char* b) {
  const std::string narrowA(a);
  const std::string narrowB(b);
  const std::wstring wideA(narrowA.begin(), narrowA.end());
  const std::wstring wideB(narrowB.begin(), narrowB.end());
  return ZnString::znstrnumbercmp(wideA.c_str(), wideB.c_str());
}

bool IsAscii(const std::string& text) {
  for (unsigned char c : text) {
    if (c >= 0x80) return false;
  }
  return true;
}

void CheckOrder(Compare compare, const std::vector<std::string>& texts) {
  for (const std::string& a : texts) {
    if (compare(a.c_str(), a.c_str()) != 0) std::abort();
    for (const std::string& b : texts) {
      const int ab = compare(a.c_str(), b.c_str());
      if (ab < -1 || ab > 1 || ab != -compare(b.c_str(), a.c_str())) std::abort();
      for (const std::string& c : texts) {
        if (ab <= 0 && compare(b.c_str(), c.c_str()) <= 0 && compare(a.c_str(), c.c_str()) > 0) {
          std::abort();
        }
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> texts(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] != 0) {
      texts.back() += static_cast<char>(data[i]);
    } else if (texts.size() < 3) {
      texts.emplace_back();
    }
  }
  CheckOrder(ZnString::znstrnumbercmp, texts);
  CheckOrder(ZnString::znstrnumbericmp, texts);
  bool ascii = true;
  for (const std::string& text : texts) ascii = ascii && IsAscii(text);
  if (!ascii) return 0;
  for (const std::string& a : texts) {
    for (const std::string& b : texts) {
      if (WideCompare(a.c_str(), b.c_str()) != ZnString::znstrnumbercmp(a.c_str(), b.c_str())) {
        std::abort();
      }
    }
  }
  return 0;
}

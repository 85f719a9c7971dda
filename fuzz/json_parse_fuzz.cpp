// The JSON parser on arbitrary bytes, and the round trip through both writers.
//
// Invariants beyond "no crash": bad input fails only with json_parse_exception; whatever parses
// writes as text the parser accepts; two rounds of writing and parsing reach a fixed point; the
// indented form reads back as the same tree; copies compare equal and unordered against the
// original. One round is not always enough: a number may come back from 16 digits as a double
// just below a power of ten, where the next round's 16 digits are all nines ("1e+34" reads as
// the double that prints "9.999999999999999e+33"); that text then stays.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "zenutl/json_value.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  json_value first;
  try {
    first = json_value::parse(text);
  } catch (json_parse_exception const&) {
    return 0;
  }
  const std::string written = json_value::parse(first.to_string()).to_string();
  const json_value settled = json_value::parse(written);
  if (settled.to_string() != written) std::abort();
  const unsigned int indent = size % 5;
  if (json_value::parse(settled.to_pretty_string(indent)) != settled) std::abort();
  const json_value copy = first;
  if (copy != first || copy < first || first < copy) std::abort();
  return 0;
}

// Base64: binary data as text in the standard alphabet ("A-Z", "a-z", "0-9", "+", "/", "=" as
// the pad), with line breaks for mail-style wrapping. MD5 and Blowfish have headers of their
// own.
//
// Error contract: both functions throw std::runtime_error, with the texts "Base64::Encode -
// Internal error" and "Base64::Decode - Internal error"; Encode only when the output would not
// fit in a std::string. Any text may be given to Decode: it answers or throws, and never reads
// beyond the text.
#ifndef ZENUTL_BASE64_H_
#define ZENUTL_BASE64_H_

#include <string>

namespace Base64 {

// Four characters for each three bytes, the last group padded with "=". A counter of the
// characters written runs over the whole text, pads included; each time it reaches
// `lineLength`, `lineBreak` is written and the count starts again. So a break also ends the
// text when the text's length is a multiple of `lineLength`, and a `lineLength` of 0 or 1 puts
// a break after every character.
//
//   "Man", 76, "\r\n"    => "TWFu"
//   "Ma", 76, "\r\n"     => "TWE="
//   "abcdef", 4, "\n"    => "YWJj\nZGVm\n"
//   "" , any, any        => ""
std::string Encode(std::string const& data, unsigned int lineLength, std::string const& lineBreak);

// The bytes of Base64 text. White space (isspace) is skipped wherever it stands, so the
// wrapped form of Encode reads back when its line break is white space. Throws for a character
// outside the alphabet, a third pad, a data character after a pad, or a final group whose data
// characters and pads don't make four. A group that holds pads but no data character ends the
// text without complaint ("TWFu=" => "Man").
//
// A zero byte is taken as a data character of value 65 (one past the pad) rather than refused,
// as the decoder has always done: its bits spill into the neighbouring bytes of its group
// ("AAA\0" => 00 00 41). Callers that need strict input must refuse zero bytes themselves.
std::string Decode(std::string const& text);

}  // namespace Base64

#endif  // ZENUTL_BASE64_H_

// The byte helpers: the older, exception-free layer for raw bytes on standard streams.
//
// Values go out as they lie in memory (little-endian here) with no tag and no count; the caller
// knows what comes next. `Two`, `Four` and `Eight` only name the width of one item, so that
// `WriteEightBytes(&value, 1, out)` moves one 8-byte value; no byte order is changed. Binary
// strings are an unsigned 16-bit length followed by that many bytes, with no terminator. The
// typed, exception-reporting layer is StreamReader/StreamWriter (stream_reader.h,
// stream_writer.h); new code should use that one.
//
// Error contract: nothing here throws except std::bad_alloc. Every function answers true only
// when the stream's state is entirely clear afterwards, so a read that reaches the end of the
// stream counts as a failure even when it got all its bytes; the stream's state stays as the
// operation left it, for the caller to see. A negative count or width moves nothing and sets
// failbit.
#ifndef ZENUTL_STREAM_BYTE_HELPERS_H_
#define ZENUTL_STREAM_BYTE_HELPERS_H_

#include <istream>
#include <ostream>
#include <string>

#include "zenutl/cstring.h"

// Writes `count` items of `size` bytes (count bytes, 2, 4 or 8 times count bytes).
bool WriteBytes(const void* data, int count, std::ostream& stream);
bool WriteTwoBytes(const void* data, int count, std::ostream& stream);
bool WriteFourBytes(const void* data, int count, std::ostream& stream);
bool WriteEightBytes(const void* data, int count, std::ostream& stream);
bool WriteArray(const void* data, int size, int count, std::ostream& stream);

// Reads `count` items of `size` bytes into `data`, which must hold them.
bool ReadBytes(void* data, int count, std::istream& stream);
bool ReadTwoBytes(void* data, int count, std::istream& stream);
bool ReadFourBytes(void* data, int count, std::istream& stream);
bool ReadEightBytes(void* data, int count, std::istream& stream);
bool ReadArray(void* data, int size, int count, std::istream& stream);

// Writes the text as a binary string; null counts as "". The length is strlen cut to its low
// 16 bits, and only that many bytes follow: a text of 70000 characters goes out as its first
// 4464 (70000 - 65536), with no error: files of this format were always written so.
bool WriteBinaryString(const char* text, std::ostream& stream);

// Reading a binary string. Each overload reads the two length bytes first and answers false if
// they are not there; a string cut short by the end of the stream also answers false.
//
// Into a new buffer: any buffer in `*text` is freed (delete[]) and the pointer set to null
// before anything is read. Once the length is known, a buffer of length + 1 bytes (new[]) is
// stored in `*text` and filled with the bytes and a terminator. The caller owns it, also when
// the answer is false; bytes that never came read as zeros.
bool ReadBinaryString(char** text, std::istream& stream);
// Into a reusable buffer of `*capacity` bytes (terminator included): it is replaced only when
// the text and its terminator do not fit, and then by one of exactly length + 1 bytes, which
// `*capacity` then holds. A null `*text` is an empty buffer. Otherwise as above.
bool ReadBinaryString(char** text, int* capacity, std::istream& stream);
// Into a CString, which ends at the first zero byte of the text: "ab\0cd" reads as "ab". Left
// as it was when the length cannot be read.
bool ReadBinaryString(CString& text, std::istream& stream);
// Into a std::string, which is emptied first and then keeps every byte, zeros included. When
// the stream ends inside the text, each missing byte repeats the last byte that was read (a
// zero byte if none was), so the string always has the announced length: callers of the older
// format get the same text they always got.
bool ReadBinaryString(std::string& text, std::istream& stream);

#endif  // ZENUTL_STREAM_BYTE_HELPERS_H_

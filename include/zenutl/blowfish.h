// BlowFish: the Blowfish block cipher in ECB mode, for applications that keep small secrets in
// files. Each 8-byte block is enciphered alone, with no chaining, no initial value and no
// padding, so equal blocks give equal cipher text; the caller pads to a multiple of 8. Blocks
// are read and written as two big-endian 32-bit words, so the published test vectors apply to
// byte buffers exactly as they are printed. Digests and Base64 text have headers of their own.
//
// Keys may have any length; bytes past the 72nd take no part, and an empty key leaves the
// schedule's tables as published. Building a Context costs 521 block encipherments, so keep one
// for many buffers rather than calling the free functions in a loop.
//
// Error contract: nothing here throws or reports. A `length` that is not a multiple of 8 is
// outside the contract; the bytes after the last whole block are then left as they are.
#ifndef ZENUTL_BLOWFISH_H_
#define ZENUTL_BLOWFISH_H_

#include "zenutl/platform_types.h"

namespace BlowFish {

// A key schedule. Copies are independent.
class Context {
 public:
  // `key` may be null when `keyLength` is 0.
  Context(void const* key, unsigned int keyLength);

  // In place, ECB, `length` a multiple of 8; a length of 0 does nothing.
  void Encrypt(void* buffer, unsigned int length) const;
  void Decrypt(void* buffer, unsigned int length) const;

 private:
  // One block as two words, and the round function.
  void Encipher(DWORD* left, DWORD* right) const;
  void Decipher(DWORD* left, DWORD* right) const;
  DWORD F(DWORD x) const;

  DWORD mP[18];
  DWORD mS[4][256];
};

// Build a Context for this one call and apply it.
void Encrypt(void const* key, unsigned int keyLength, void* buffer, unsigned int length);
void Decrypt(void const* key, unsigned int keyLength, void* buffer, unsigned int length);

}  // namespace BlowFish

#endif  // ZENUTL_BLOWFISH_H_

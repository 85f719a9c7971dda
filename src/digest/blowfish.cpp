// Blowfish as published: 16 rounds, the key folded into the P-array byte by byte in big-endian
// order, then the whole schedule re-enciphered from two zero words.
#include "zenutl/blowfish.h"

#include <cstring>

#include "digest/blowfish_tables.h"

namespace {

inline DWORD LoadBigEndian(const unsigned char* bytes) {
  return (static_cast<DWORD>(bytes[0]) << 24) | (static_cast<DWORD>(bytes[1]) << 16) |
         (static_cast<DWORD>(bytes[2]) << 8) | static_cast<DWORD>(bytes[3]);
}

inline void StoreBigEndian(unsigned char* bytes, DWORD word) {
  bytes[0] = static_cast<unsigned char>(word >> 24);
  bytes[1] = static_cast<unsigned char>(word >> 16);
  bytes[2] = static_cast<unsigned char>(word >> 8);
  bytes[3] = static_cast<unsigned char>(word);
}

// Applies `cipher` to each whole block of 8 bytes in place, as two big-endian words.
template <typename Cipher>
void ForEachBlock(void* buffer, unsigned int length, Cipher cipher) {
  unsigned char* block = static_cast<unsigned char*>(buffer);
  for (unsigned int blocks = length / 8; blocks != 0; --blocks, block += 8) {
    DWORD left = LoadBigEndian(block);
    DWORD right = LoadBigEndian(block + 4);
    cipher(&left, &right);
    StoreBigEndian(block, left);
    StoreBigEndian(block + 4, right);
  }
}

}  // namespace

namespace BlowFish {

inline DWORD Context::F(DWORD x) const {
  return ((mS[0][x >> 24] + mS[1][(x >> 16) & 0xFF]) ^ mS[2][(x >> 8) & 0xFF]) + mS[3][x & 0xFF];
}

// The rounds alternate halves, so that the 16 of them need no swapping until the end.
inline void Context::Encipher(DWORD* left, DWORD* right) const {
  DWORD l = *left ^ mP[0];
  DWORD r = *right;
  for (int i = 1; i < 17; i += 2) {
    r ^= F(l) ^ mP[i];
    l ^= F(r) ^ mP[i + 1];
  }
  *left = r ^ mP[17];
  *right = l;
}

inline void Context::Decipher(DWORD* left, DWORD* right) const {
  DWORD l = *left ^ mP[17];
  DWORD r = *right;
  for (int i = 16; i > 0; i -= 2) {
    r ^= F(l) ^ mP[i];
    l ^= F(r) ^ mP[i - 1];
  }
  *left = r ^ mP[0];
  *right = l;
}

Context::Context(void const* key, unsigned int keyLength) {
  const unsigned char* keyBytes = static_cast<const unsigned char*>(key);
  // The key's bytes run on cyclically across the words, so a key whose length is not a
  // multiple of 4 wraps in the middle of a word.
  unsigned int next = 0;
  for (int i = 0; i < 18; ++i) {
    DWORD word = 0;
    for (int k = 0; k < 4 && keyLength != 0; ++k) {
      word = (word << 8) | keyBytes[next];
      next = (next + 1) % keyLength;
    }
    mP[i] = zenutl::digest::kBlowfishP[i] ^ word;
  }
  std::memcpy(mS, zenutl::digest::kBlowfishS, sizeof(mS));

  DWORD left = 0, right = 0;
  for (int i = 0; i < 18; i += 2) {
    Encipher(&left, &right);
    mP[i] = left;
    mP[i + 1] = right;
  }
  for (int box = 0; box < 4; ++box) {
    for (int i = 0; i < 256; i += 2) {
      Encipher(&left, &right);
      mS[box][i] = left;
      mS[box][i + 1] = right;
    }
  }
}

void Context::Encrypt(void* buffer, unsigned int length) const {
  ForEachBlock(buffer, length, [this](DWORD* left, DWORD* right) { Encipher(left, right); });
}

void Context::Decrypt(void* buffer, unsigned int length) const {
  ForEachBlock(buffer, length, [this](DWORD* left, DWORD* right) { Decipher(left, right); });
}

void Encrypt(void const* key, unsigned int keyLength, void* buffer, unsigned int length) {
  Context(key, keyLength).Encrypt(buffer, length);
}

void Decrypt(void const* key, unsigned int keyLength, void* buffer, unsigned int length) {
  Context(key, keyLength).Decrypt(buffer, length);
}

}  // namespace BlowFish

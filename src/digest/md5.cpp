// MD5 as RFC 1321 gives it. The block function is written for speed: whole blocks of a long
// input are digested straight from the caller's memory, the words of a block are loaded
// directly on a little-endian machine, and the round helpers are inlined.
#include "zenutl/md5.h"

#include <cstring>
#include <istream>
#include <memory>

namespace {

const unsigned char kPadding[64] = {0x80};

// The pieces in which files and streams are read.
const unsigned int kReadPiece = 1024;

}  // namespace

MD5::MD5() : mFinalized(false), mState(nullptr), mCount(nullptr), mBuffer(nullptr) {
  Init();
}

MD5::MD5(void const* input, unsigned int length) : MD5() {
  Update(input, length);
  Finalize();
}

MD5::MD5(char const* text) : MD5() {
  Update(text);
  Finalize();
}

MD5::MD5(FILE* file) : MD5() {
  Update(file);
  Finalize();
}

MD5::MD5(std::istream& stream) : MD5() {
  Update(stream);
  Finalize();
}

MD5::~MD5() {
  CleanUp();
}

void MD5::Init() {
  std::unique_ptr<DWORD[]> state(new DWORD[4]);
  std::unique_ptr<DWORD[]> count(new DWORD[2]);
  std::unique_ptr<unsigned char[]> buffer(new unsigned char[64]);
  state[0] = 0x67452301;
  state[1] = 0xefcdab89;
  state[2] = 0x98badcfe;
  state[3] = 0x10325476;
  count[0] = count[1] = 0;
  std::memset(mRawDigest, 0, sizeof(mRawDigest));
  std::memset(mDigest, 0, sizeof(mDigest));
  mState = state.release();
  mCount = count.release();
  mBuffer = buffer.release();
  mFinalized = false;
}

void MD5::CleanUp() {
  delete[] mState;
  delete[] mCount;
  delete[] mBuffer;
  mState = nullptr;
  mCount = nullptr;
  mBuffer = nullptr;
}

void MD5::Update(void const* input, unsigned int length) {
  if (mFinalized || length == 0) return;
  const unsigned char* bytes = static_cast<const unsigned char*>(input);
  unsigned int index = (mCount[0] >> 3) & 0x3F;
  // The bit count is 64 bits in two words; the shifted length may carry into the high word.
  mCount[0] += length << 3;
  if (mCount[0] < (length << 3)) ++mCount[1];
  mCount[1] += length >> 29;

  const unsigned int partLength = 64 - index;
  unsigned int i = 0;
  if (length >= partLength) {
    std::memcpy(&mBuffer[index], bytes, partLength);
    Transform(mState, mBuffer);
    i = partLength;
    const std::size_t wholeBlocks = (length - i) / 64;
    Transform(mState, bytes + i, wholeBlocks);
    i += static_cast<unsigned int>(wholeBlocks * 64);
    index = 0;
  }
  std::memcpy(&mBuffer[index], bytes + i, length - i);
}

void MD5::Update(char const* text) {
  if (text == nullptr) return;
  Update(text, static_cast<unsigned int>(std::strlen(text)));
}

void MD5::Update(FILE* file) {
  if (file == nullptr) return;
  unsigned char piece[kReadPiece];
  std::size_t got;
  while ((got = std::fread(piece, 1, sizeof(piece), file)) != 0) {
    Update(piece, static_cast<unsigned int>(got));
  }
}

void MD5::Update(std::istream& stream) {
  char piece[kReadPiece];
  while (stream.good()) {
    stream.read(piece, sizeof(piece));
    Update(piece, static_cast<unsigned int>(stream.gcount()));
  }
}

void MD5::Finalize() {
  if (mFinalized) return;
  unsigned char bits[8];
  Encode(bits, mCount, 8);
  const unsigned int index = (mCount[0] >> 3) & 0x3F;
  const unsigned int padLength = index < 56 ? 56 - index : 120 - index;
  Update(kPadding, padLength);
  Update(bits, 8);
  Encode(mRawDigest, mState, 16);
  CleanUp();

  static const char kHex[] = "0123456789abcdef";
  for (int i = 0; i < 16; ++i) {
    mDigest[2 * i] = kHex[mRawDigest[i] >> 4];
    mDigest[2 * i + 1] = kHex[mRawDigest[i] & 0xF];
  }
  mDigest[32] = 0;
  mFinalized = true;
}

MD5::RawDigest const* MD5::GetRawDigest() const {
  return mFinalized ? &mRawDigest : nullptr;
}

char const* MD5::GetDigest() const {
  return mFinalized ? mDigest : nullptr;
}

// Words to little-endian bytes; `length` is in bytes, a multiple of 4.
void MD5::Encode(unsigned char* output, DWORD const* input, unsigned int length) {
  for (unsigned int i = 0, j = 0; j < length; ++i, j += 4) {
    output[j] = static_cast<unsigned char>(input[i] & 0xff);
    output[j + 1] = static_cast<unsigned char>((input[i] >> 8) & 0xff);
    output[j + 2] = static_cast<unsigned char>((input[i] >> 16) & 0xff);
    output[j + 3] = static_cast<unsigned char>((input[i] >> 24) & 0xff);
  }
}

// Little-endian bytes to words; `length` is in bytes, a multiple of 4.
void MD5::Decode(DWORD* output, unsigned char const* input, unsigned int length) {
  for (unsigned int i = 0, j = 0; j < length; ++i, j += 4) {
    output[i] = static_cast<DWORD>(input[j]) | (static_cast<DWORD>(input[j + 1]) << 8) |
                (static_cast<DWORD>(input[j + 2]) << 16) | (static_cast<DWORD>(input[j + 3]) << 24);
  }
}

// The round helpers are defined inline so that Transform compiles to straight-line code.
inline DWORD MD5::RotateLeft(DWORD x, int n) {
  return (x << n) | (x >> (32 - n));
}
inline DWORD MD5::F(DWORD x, DWORD y, DWORD z) {
  return z ^ (x & (y ^ z));  // (x & y) | (~x & z)
}
inline DWORD MD5::G(DWORD x, DWORD y, DWORD z) {
  return (x & z) + (y & ~z);  // the two halves never share a bit, so + equals |
}
inline DWORD MD5::H(DWORD x, DWORD y, DWORD z) {
  return x ^ y ^ z;
}
inline DWORD MD5::I(DWORD x, DWORD y, DWORD z) {
  return y ^ (x | ~z);
}
inline void MD5::FF(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac) {
  a = RotateLeft(a + F(b, c, d) + x + ac, s) + b;
}
inline void MD5::GG(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac) {
  a = RotateLeft(a + G(b, c, d) + x + ac, s) + b;
}
inline void MD5::HH(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac) {
  a = RotateLeft(a + H(b, c, d) + x + ac, s) + b;
}
inline void MD5::II(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac) {
  a = RotateLeft(a + I(b, c, d) + x + ac, s) + b;
}

void MD5::Transform(DWORD state[4], unsigned char const* block, std::size_t blocks) {
  DWORD a = state[0], b = state[1], c = state[2], d = state[3];
  for (; blocks != 0; --blocks, block += 64) {
    DWORD x[16];
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    std::memcpy(x, block, 64);
#else
    Decode(x, block, 64);
#endif
    const DWORD a0 = a, b0 = b, c0 = c, d0 = d;

    FF(a, b, c, d, x[0], 7, 0xd76aa478);
    FF(d, a, b, c, x[1], 12, 0xe8c7b756);
    FF(c, d, a, b, x[2], 17, 0x242070db);
    FF(b, c, d, a, x[3], 22, 0xc1bdceee);
    FF(a, b, c, d, x[4], 7, 0xf57c0faf);
    FF(d, a, b, c, x[5], 12, 0x4787c62a);
    FF(c, d, a, b, x[6], 17, 0xa8304613);
    FF(b, c, d, a, x[7], 22, 0xfd469501);
    FF(a, b, c, d, x[8], 7, 0x698098d8);
    FF(d, a, b, c, x[9], 12, 0x8b44f7af);
    FF(c, d, a, b, x[10], 17, 0xffff5bb1);
    FF(b, c, d, a, x[11], 22, 0x895cd7be);
    FF(a, b, c, d, x[12], 7, 0x6b901122);
    FF(d, a, b, c, x[13], 12, 0xfd987193);
    FF(c, d, a, b, x[14], 17, 0xa679438e);
    FF(b, c, d, a, x[15], 22, 0x49b40821);

    GG(a, b, c, d, x[1], 5, 0xf61e2562);
    GG(d, a, b, c, x[6], 9, 0xc040b340);
    GG(c, d, a, b, x[11], 14, 0x265e5a51);
    GG(b, c, d, a, x[0], 20, 0xe9b6c7aa);
    GG(a, b, c, d, x[5], 5, 0xd62f105d);
    GG(d, a, b, c, x[10], 9, 0x02441453);
    GG(c, d, a, b, x[15], 14, 0xd8a1e681);
    GG(b, c, d, a, x[4], 20, 0xe7d3fbc8);
    GG(a, b, c, d, x[9], 5, 0x21e1cde6);
    GG(d, a, b, c, x[14], 9, 0xc33707d6);
    GG(c, d, a, b, x[3], 14, 0xf4d50d87);
    GG(b, c, d, a, x[8], 20, 0x455a14ed);
    GG(a, b, c, d, x[13], 5, 0xa9e3e905);
    GG(d, a, b, c, x[2], 9, 0xfcefa3f8);
    GG(c, d, a, b, x[7], 14, 0x676f02d9);
    GG(b, c, d, a, x[12], 20, 0x8d2a4c8a);

    HH(a, b, c, d, x[5], 4, 0xfffa3942);
    HH(d, a, b, c, x[8], 11, 0x8771f681);
    HH(c, d, a, b, x[11], 16, 0x6d9d6122);
    HH(b, c, d, a, x[14], 23, 0xfde5380c);
    HH(a, b, c, d, x[1], 4, 0xa4beea44);
    HH(d, a, b, c, x[4], 11, 0x4bdecfa9);
    HH(c, d, a, b, x[7], 16, 0xf6bb4b60);
    HH(b, c, d, a, x[10], 23, 0xbebfbc70);
    HH(a, b, c, d, x[13], 4, 0x289b7ec6);
    HH(d, a, b, c, x[0], 11, 0xeaa127fa);
    HH(c, d, a, b, x[3], 16, 0xd4ef3085);
    HH(b, c, d, a, x[6], 23, 0x04881d05);
    HH(a, b, c, d, x[9], 4, 0xd9d4d039);
    HH(d, a, b, c, x[12], 11, 0xe6db99e5);
    HH(c, d, a, b, x[15], 16, 0x1fa27cf8);
    HH(b, c, d, a, x[2], 23, 0xc4ac5665);

    II(a, b, c, d, x[0], 6, 0xf4292244);
    II(d, a, b, c, x[7], 10, 0x432aff97);
    II(c, d, a, b, x[14], 15, 0xab9423a7);
    II(b, c, d, a, x[5], 21, 0xfc93a039);
    II(a, b, c, d, x[12], 6, 0x655b59c3);
    II(d, a, b, c, x[3], 10, 0x8f0ccc92);
    II(c, d, a, b, x[10], 15, 0xffeff47d);
    II(b, c, d, a, x[1], 21, 0x85845dd1);
    II(a, b, c, d, x[8], 6, 0x6fa87e4f);
    II(d, a, b, c, x[15], 10, 0xfe2ce6e0);
    II(c, d, a, b, x[6], 15, 0xa3014314);
    II(b, c, d, a, x[13], 21, 0x4e0811a1);
    II(a, b, c, d, x[4], 6, 0xf7537e82);
    II(d, a, b, c, x[11], 10, 0xbd3af235);
    II(c, d, a, b, x[2], 15, 0x2ad7d2bb);
    II(b, c, d, a, x[9], 21, 0xeb86d391);

    a += a0;
    b += b0;
    c += c0;
    d += d0;
  }
  state[0] = a;
  state[1] = b;
  state[2] = c;
  state[3] = d;
}

// MD5: the message digest of RFC 1321, for checksums that must match other tools' (file
// fingerprints, cache keys). It is no protection against a deliberate forgery.
//
// An object digests once: feed it with `Update` and call `Finalize`, or use one of the
// constructors that take the data and finish at once. After `Finalize` the working state is
// gone and only the digest remains, so further `Update` calls are ignored and an object can't be
// reused; make a new one. Base64 text and the Blowfish cipher have headers of their own.
//
//   MD5("abc").GetDigest()  => "900150983cd24fb0d6963f7d28e17f72"
//   MD5("").GetDigest()     => "d41d8cd98f00b204e9800998ecf8427e"
//
// Error contract: nothing here throws (apart from allocation failure) and nothing reports. A
// file or stream that can't be read ends the input silently: the digest is that of what was
// read. A null text or file is no input.
#ifndef ZENUTL_MD5_H_
#define ZENUTL_MD5_H_

#include <cstddef>
#include <cstdio>
#include <iosfwd>

#include "zenutl/platform_types.h"

class MD5 {
 public:
  typedef unsigned char RawDigest[16];

  // Ready for Update.
  MD5();
  // Digest the data at once: the object is finished on return.
  MD5(void const* input, unsigned int length);
  explicit MD5(char const* text);  // strlen bytes, the terminator excluded
  explicit MD5(FILE* file);        // from the current position to the end; not rewound or closed
  explicit MD5(std::istream& stream);
  ~MD5();
  MD5(const MD5&) = delete;
  MD5& operator=(const MD5&) = delete;

  void Update(void const* input, unsigned int length);
  void Update(char const* text);
  // Reads in pieces of 1024 bytes until fread gives nothing; doesn't rewind or close the file.
  void Update(FILE* file);
  // Reads in pieces of 1024 bytes while the stream's state is clear.
  void Update(std::istream& stream);

  // Pads, takes the digest and frees the working state. A second call does nothing.
  void Finalize();

  // The 16 bytes, or null before Finalize.
  RawDigest const* GetRawDigest() const;
  // 32 lower-case hexadecimal characters, or null before Finalize.
  char const* GetDigest() const;
  bool IsFinalized() const { return mFinalized; }

 private:
  void Init();
  void CleanUp();

  // The helpers of RFC 1321, under its names.
  static void Encode(unsigned char* output, DWORD const* input, unsigned int length);
  static void Decode(DWORD* output, unsigned char const* input, unsigned int length);
  static DWORD RotateLeft(DWORD x, int n);
  static DWORD F(DWORD x, DWORD y, DWORD z);
  static DWORD G(DWORD x, DWORD y, DWORD z);
  static DWORD H(DWORD x, DWORD y, DWORD z);
  static DWORD I(DWORD x, DWORD y, DWORD z);
  static void FF(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac);
  static void GG(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac);
  static void HH(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac);
  static void II(DWORD& a, DWORD b, DWORD c, DWORD d, DWORD x, int s, DWORD ac);
  // Digests `blocks` consecutive 64-byte blocks into `state`.
  static void Transform(DWORD state[4], unsigned char const* block, std::size_t blocks = 1);

  bool mFinalized;
  DWORD* mState;           // 4 words; null after Finalize
  DWORD* mCount;           // bits so far, low word first; null after Finalize
  unsigned char* mBuffer;  // 64 bytes of a partial block; null after Finalize
  RawDigest mRawDigest;
  char mDigest[33];
};

#endif  // ZENUTL_MD5_H_

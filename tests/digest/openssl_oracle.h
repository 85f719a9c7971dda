// OpenSSL's libcrypto as the oracle for the digest and cipher tests, and random inputs for it.
#ifndef ZENUTL_TESTS_DIGEST_OPENSSL_ORACLE_H_
#define ZENUTL_TESTS_DIGEST_OPENSSL_ORACLE_H_

// The Blowfish block calls are marked deprecated in OpenSSL 3, but remain the plain way to
// reach the raw cipher.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>
#include <openssl/evp.h>

#include <random>
#include <string>

namespace zenutl_test {

inline std::string RandomBytes(std::mt19937& random, std::size_t length) {
  std::uniform_int_distribution<int> byte(0, 255);
  std::string bytes(length, '\0');
  for (char& c : bytes) c = static_cast<char>(byte(random));
  return bytes;
}

inline std::string OpenSslMd5(const std::string& data) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_Digest(data.data(), data.size(), digest, &length, EVP_md5(), nullptr);
  return std::string(reinterpret_cast<char*>(digest), length);
}

// Base64 without line breaks.
inline std::string OpenSslBase64(const std::string& data) {
  std::string text(4 * ((data.size() + 2) / 3) + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&text[0]),
                                     reinterpret_cast<const unsigned char*>(data.data()),
                                     static_cast<int>(data.size()));
  text.resize(length);
  return text;
}

// Base64 in lines of 64 characters, each ended by "\n", the last one too.
inline std::string OpenSslWrappedBase64(const std::string& data) {
  EVP_ENCODE_CTX* context = EVP_ENCODE_CTX_new();
  std::string text(data.size() * 2 + 80, '\0');
  unsigned char* out = reinterpret_cast<unsigned char*>(&text[0]);
  int length = 0, last = 0;
  EVP_EncodeInit(context);
  EVP_EncodeUpdate(context, out, &length, reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<int>(data.size()));
  EVP_EncodeFinal(context, out + length, &last);
  EVP_ENCODE_CTX_free(context);
  text.resize(length + last);
  return text;
}

// Blowfish ECB in place, block by block.
inline void OpenSslBlowfish(const std::string& key, std::string& data, bool encrypt) {
  BF_KEY schedule;
  BF_set_key(&schedule, static_cast<int>(key.size()),
             reinterpret_cast<const unsigned char*>(key.data()));
  for (std::size_t i = 0; i + 8 <= data.size(); i += 8) {
    unsigned char* block = reinterpret_cast<unsigned char*>(&data[i]);
    BF_ecb_encrypt(block, block, &schedule, encrypt ? BF_ENCRYPT : BF_DECRYPT);
  }
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_DIGEST_OPENSSL_ORACLE_H_

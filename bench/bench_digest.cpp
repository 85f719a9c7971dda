// MD5, Base64 and Blowfish ECB against OpenSSL's libcrypto on the same 64 MB of random bytes.
//
// Pairs: MD5 with EVP's MD5; Base64 in lines of 64 characters with EVP_EncodeUpdate and
// EVP_DecodeUpdate, and unbroken with EVP_EncodeBlock and EVP_DecodeBlock; Blowfish with
// BF_ecb_encrypt over the buffer. Each side allocates its output once per pass, as a caller of
// either would. Compare the bytes_per_second of a pair.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <benchmark/benchmark.h>
#include <openssl/blowfish.h>
#include <openssl/evp.h>

#include <random>
#include <string>

#include "zenutl/base64.h"
#include "zenutl/blowfish.h"
#include "zenutl/md5.h"

namespace {

const std::size_t kBytes = 64 << 20;
const unsigned int kNoWrap = 0xFFFFFFFF;
const unsigned char kKey[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

const std::string& Data() {
  static const std::string data = [] {
    std::mt19937_64 random(64);
    std::string bytes(kBytes, '\0');
    for (std::size_t i = 0; i < kBytes; i += 8) {
      const unsigned long long word = random();
      bytes.replace(i, 8, reinterpret_cast<const char*>(&word), 8);
    }
    return bytes;
  }();
  return data;
}

const std::string& WrappedText() {
  static const std::string text = Base64::Encode(Data(), 64, "\n");
  return text;
}

const std::string& PlainText() {
  static const std::string text = Base64::Encode(Data(), kNoWrap, "");
  return text;
}

const unsigned char* Bytes(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}
unsigned char* Bytes(std::string& s) {
  return reinterpret_cast<unsigned char*>(&s[0]);
}

void Done(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_Md5_Zenutl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) {
    MD5 md5(data.data(), static_cast<unsigned int>(data.size()));
    benchmark::DoNotOptimize(md5.GetRawDigest());
  }
  Done(state, kBytes);
}

void BM_Md5_OpenSsl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, EVP_md5(), nullptr);
    benchmark::DoNotOptimize(digest);
  }
  Done(state, kBytes);
}

void BM_Base64EncodeLines_Zenutl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) benchmark::DoNotOptimize(Base64::Encode(data, 64, "\n"));
  Done(state, kBytes);
}

void BM_Base64EncodeLines_OpenSsl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) {
    std::string text(WrappedText().size() + 80, '\0');
    EVP_ENCODE_CTX* context = EVP_ENCODE_CTX_new();
    int length = 0, last = 0;
    EVP_EncodeInit(context);
    EVP_EncodeUpdate(context, Bytes(text), &length, Bytes(data), static_cast<int>(data.size()));
    EVP_EncodeFinal(context, Bytes(text) + length, &last);
    EVP_ENCODE_CTX_free(context);
    text.resize(length + last);
    benchmark::DoNotOptimize(text);
  }
  Done(state, kBytes);
}

void BM_Base64Encode_Zenutl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) benchmark::DoNotOptimize(Base64::Encode(data, kNoWrap, ""));
  Done(state, kBytes);
}

void BM_Base64Encode_OpenSsl(benchmark::State& state) {
  const std::string& data = Data();
  for (auto _ : state) {
    std::string text(PlainText().size() + 1, '\0');
    text.resize(EVP_EncodeBlock(Bytes(text), Bytes(data), static_cast<int>(data.size())));
    benchmark::DoNotOptimize(text);
  }
  Done(state, kBytes);
}

void BM_Base64DecodeLines_Zenutl(benchmark::State& state) {
  const std::string& text = WrappedText();
  for (auto _ : state) benchmark::DoNotOptimize(Base64::Decode(text));
  Done(state, kBytes);
}

void BM_Base64DecodeLines_OpenSsl(benchmark::State& state) {
  const std::string& text = WrappedText();
  for (auto _ : state) {
    std::string data(text.size() / 4 * 3 + 3, '\0');
    EVP_ENCODE_CTX* context = EVP_ENCODE_CTX_new();
    int length = 0, last = 0;
    EVP_DecodeInit(context);
    EVP_DecodeUpdate(context, Bytes(data), &length, Bytes(text), static_cast<int>(text.size()));
    EVP_DecodeFinal(context, Bytes(data) + length, &last);
    EVP_ENCODE_CTX_free(context);
    data.resize(length + last);
    benchmark::DoNotOptimize(data);
  }
  Done(state, kBytes);
}

void BM_Base64Decode_Zenutl(benchmark::State& state) {
  const std::string& text = PlainText();
  for (auto _ : state) benchmark::DoNotOptimize(Base64::Decode(text));
  Done(state, kBytes);
}

void BM_Base64Decode_OpenSsl(benchmark::State& state) {
  const std::string& text = PlainText();
  // EVP_DecodeBlock counts a zero byte for each pad; they are taken off after.
  const std::size_t pads = text.size() - 1 - text.find_last_not_of('=');
  for (auto _ : state) {
    std::string data(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(Bytes(data), Bytes(text), static_cast<int>(text.size()));
    data.resize(length - pads);
    benchmark::DoNotOptimize(data);
  }
  Done(state, kBytes);
}

void BM_BlowfishEcb_Zenutl(benchmark::State& state) {
  std::string data = Data();
  const BlowFish::Context context(kKey, sizeof(kKey));
  for (auto _ : state) {
    context.Encrypt(&data[0], static_cast<unsigned int>(data.size()));
    benchmark::ClobberMemory();
  }
  Done(state, kBytes);
}

void BM_BlowfishEcb_OpenSsl(benchmark::State& state) {
  std::string data = Data();
  BF_KEY schedule;
  BF_set_key(&schedule, sizeof(kKey), kKey);
  for (auto _ : state) {
    unsigned char* bytes = Bytes(data);
    for (std::size_t i = 0; i < data.size(); i += 8) {
      BF_ecb_encrypt(bytes + i, bytes + i, &schedule, BF_ENCRYPT);
    }
    benchmark::ClobberMemory();
  }
  Done(state, kBytes);
}

}  // namespace

BENCHMARK(BM_Md5_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Md5_OpenSsl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64EncodeLines_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64EncodeLines_OpenSsl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Encode_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Encode_OpenSsl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64DecodeLines_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64DecodeLines_OpenSsl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Decode_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Decode_OpenSsl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BlowfishEcb_Zenutl)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BlowfishEcb_OpenSsl)->Unit(benchmark::kMillisecond);

// Throughput of Base64 and MD5 on message-sized bodies, next to OpenSSL's
// routines on the same bytes when OpenSSL is available.  Rates are of input
// bytes: 12 MiB to encode, its 16 MiB of text (with line ends) to decode,
// 16 MiB to digest.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Smime.h"
#include "Ssecurity.h"

#if __has_include(<openssl/evp.h>)
#include <openssl/evp.h>
#define HAVE_OPENSSL 1
#endif

namespace {

std::string Noise(size_t n)
{
    std::string bytes(n, 0);
    unsigned x = 12345;
    for (char& c : bytes) {
        x = x * 1103515245 + 12345;
        c = (char)(x >> 16);
    }
    return bytes;
}

const std::string& Plain()
{
    static const std::string bytes = Noise(12 << 20);
    return bytes;
}

const SString& Encoded()
{
    static const SString text = EncodeBase64(SString(Plain().data(), (int)Plain().size()));
    return text;
}

void BM_EncodeBase64(benchmark::State& state)
{
    SString plain(Plain().data(), (int)Plain().size());
    for (auto _ : state)
        benchmark::DoNotOptimize(EncodeBase64(plain));
    state.SetBytesProcessed(state.iterations() * plain.Length());
}

void BM_DecodeBase64(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(DecodeBase64(Encoded()));
    state.SetBytesProcessed(state.iterations() * Encoded().Length());
}

void BM_MD5(benchmark::State& state)
{
    std::string bytes = Noise(16 << 20);
    SString input(bytes.data(), (int)bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(MD5(input));
    state.SetBytesProcessed(state.iterations() * input.Length());
}

BENCHMARK(BM_EncodeBase64)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeBase64)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MD5)->Unit(benchmark::kMillisecond);

#ifdef HAVE_OPENSSL
// OpenSSL writes one unbroken line and decodes only such a line, so its
// decoder gets the same text without the line ends.
void BM_OpenSSL_EncodeBlock(benchmark::State& state)
{
    const std::string& plain = Plain();
    std::vector<unsigned char> out(plain.size() / 3 * 4 + 8);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            EVP_EncodeBlock(out.data(), (const unsigned char*)plain.data(), (int)plain.size()));
    state.SetBytesProcessed(state.iterations() * plain.size());
}

void BM_OpenSSL_DecodeBlock(benchmark::State& state)
{
    std::string text;
    for (const char* p = Encoded().Data(); *p; p++) {
        if (*p != '\r' && *p != '\n')
            text += *p;
    }
    std::vector<unsigned char> out(text.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(
            EVP_DecodeBlock(out.data(), (const unsigned char*)text.data(), (int)text.size()));
    state.SetBytesProcessed(state.iterations() * text.size());
}

void BM_OpenSSL_MD5(benchmark::State& state)
{
    std::string bytes = Noise(16 << 20);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_md5(), nullptr));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

BENCHMARK(BM_OpenSSL_EncodeBlock)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSSL_DecodeBlock)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSSL_MD5)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();

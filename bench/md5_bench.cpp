#include "util/md5.h"

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

namespace {

constexpr std::int64_t kSmall = 64;
constexpr std::int64_t kMedium = 1 << 10;
constexpr std::int64_t kLarge = 1 << 20;

std::string asciiInput(std::int64_t size) {
  std::string input;
  for (std::int64_t i = 0; i < size; ++i) input += static_cast<char>('a' + i % 26);
  return input;
}

// Half the characters need the UTF-16 conversion; the size counts input bytes.
std::string latin1Input(std::int64_t size) {
  std::string input;
  while (static_cast<std::int64_t>(input.size()) + 3 <= size) input += "x\u00e9";
  input.resize(static_cast<std::size_t>(size), 'x');
  return input;
}

void setThroughput(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void BM_CMD5Ascii(benchmark::State& state) {
  const std::string input = asciiInput(state.range(0));
  const brenmoor::CMD5 md5;
  for (auto _ : state) benchmark::DoNotOptimize(md5.MD5(input));
  setThroughput(state);
}

void BM_CMD5Latin1(benchmark::State& state) {
  const std::string input = latin1Input(state.range(0));
  const brenmoor::CMD5 md5;
  for (auto _ : state) benchmark::DoNotOptimize(md5.MD5(input));
  setThroughput(state);
}

void BM_OpenSslMd5(benchmark::State& state) {
  const std::string input = asciiInput(state.range(0));
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int digestSize = 0;
  for (auto _ : state) {
    EVP_Digest(input.data(), input.size(), digest.data(), &digestSize, EVP_md5(), nullptr);
    benchmark::DoNotOptimize(digest);
  }
  setThroughput(state);
}

BENCHMARK(BM_CMD5Ascii)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge);
BENCHMARK(BM_CMD5Latin1)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge);
BENCHMARK(BM_OpenSslMd5)->Arg(kSmall)->Arg(kMedium)->Arg(kLarge);

}  // namespace

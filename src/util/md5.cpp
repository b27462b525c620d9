#include "util/md5.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace brenmoor {
namespace {

using Bytes = std::span<const unsigned char>;

// RFC 1321: floor(abs(sin(i + 1)) * 2^32) for step i.
constexpr std::array<std::uint32_t, 64> kSineConstants = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

// RFC 1321 rotation amounts: four per round, repeated four times within the round.
constexpr std::array<std::array<int, 4>, 4> kRotations = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

constexpr std::size_t kBlockSize = 64;
constexpr std::size_t kLengthFieldOffset = 56;

std::uint32_t loadLittleEndian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

// Incremental MD5: full blocks are compressed straight from the caller's buffer, so a large
// message is never copied.
class Md5Stream {
 public:
  void update(Bytes bytes) {
    totalBytes_ += bytes.size();
    if (pendingSize_ > 0) {
      const std::span<unsigned char> room = std::span(pending_).subspan(pendingSize_);
      const std::size_t taken = std::min(bytes.size(), room.size());
      std::copy_n(bytes.begin(), taken, room.begin());
      pendingSize_ += taken;
      bytes = bytes.subspan(taken);
      if (pendingSize_ < kBlockSize) return;
      compress(pending_.data());
      pendingSize_ = 0;
    }
    for (; bytes.size() >= kBlockSize; bytes = bytes.subspan(kBlockSize)) compress(bytes.data());
    // The loop leaves less than a block; the bound says so to the optimiser too.
    pendingSize_ = std::min(bytes.size(), kBlockSize);
    std::copy_n(bytes.begin(), pendingSize_, pending_.begin());
  }

  std::string finishHex() {
    // RFC 1321 padding: 0x80, zeros up to byte 56 of a block, then the bit count.
    const std::uint64_t bitCount = totalBytes_ * 8;
    pending_[pendingSize_++] = 0x80;
    if (pendingSize_ > kLengthFieldOffset) {
      std::fill(pending_.begin() + pendingSize_, pending_.end(), 0);
      compress(pending_.data());
      pendingSize_ = 0;
    }
    std::fill(pending_.begin() + pendingSize_, pending_.begin() + kLengthFieldOffset, 0);
    for (std::size_t i = 0; i < 8; ++i) {
      pending_[kLengthFieldOffset + i] = static_cast<unsigned char>(bitCount >> (8 * i));
    }
    compress(pending_.data());

    constexpr std::string_view kHexDigits = "0123456789abcdef";
    std::string hex;
    hex.reserve(32);
    for (const std::uint32_t word : state_) {
      for (int shift = 0; shift < 32; shift += 8) {
        const unsigned byte = (word >> shift) & 0xffU;
        hex += kHexDigits[byte >> 4];
        hex += kHexDigits[byte & 0xfU];
      }
    }
    return hex;
  }

 private:
  void compress(const unsigned char* block) {
    std::array<std::uint32_t, 16> words;
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = loadLittleEndian(block + 4 * i);

    // Plain locals rather than structured bindings: clang 14 cannot capture bindings.
    std::uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3];
    const auto step = [&](std::size_t index, std::uint32_t mixed, std::size_t wordIndex) {
      const int rotation = kRotations[index / 16][index % 4];
      const std::uint32_t sum = a + mixed + kSineConstants[index] + words[wordIndex];
      a = d;
      d = c;
      c = b;
      b += std::rotl(sum, rotation);
    };
    for (std::size_t i = 0; i < 16; ++i) step(i, (b & c) | (~b & d), i);
    for (std::size_t i = 16; i < 32; ++i) step(i, (d & b) | (~d & c), (5 * i + 1) % 16);
    for (std::size_t i = 32; i < 48; ++i) step(i, b ^ c ^ d, (3 * i + 5) % 16);
    for (std::size_t i = 48; i < 64; ++i) step(i, c ^ (b | ~d), (7 * i) % 16);

    state_[0] += a;
    state_[1] += b;
    state_[2] += c;
    state_[3] += d;
  }

  std::array<std::uint32_t, 4> state_ = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
  std::array<unsigned char, kBlockSize> pending_{};
  std::size_t pendingSize_ = 0;
  std::uint64_t totalBytes_ = 0;
};

struct CodePoint {
  char32_t value = 0;
  std::size_t length = 0;  // 0: the first byte does not start a well-formed sequence
};

// Decodes the well-formed UTF-8 sequence at the front of `bytes` (Unicode table 3-7, which
// rules out overlong forms, surrogates and values above U+10FFFF by the second byte's range).
CodePoint decodeUtf8(Bytes bytes) {
  const unsigned char lead = bytes[0];
  if (lead < 0x80) return {lead, 1};

  CodePoint decoded;
  unsigned char secondLow = 0x80;
  unsigned char secondHigh = 0xbf;
  if (lead >= 0xc2 && lead <= 0xdf) {
    decoded = {lead & 0x1fU, 2};
  } else if (lead >= 0xe0 && lead <= 0xef) {
    decoded = {lead & 0x0fU, 3};
    if (lead == 0xe0) secondLow = 0xa0;
    if (lead == 0xed) secondHigh = 0x9f;
  } else if (lead >= 0xf0 && lead <= 0xf4) {
    decoded = {lead & 0x07U, 4};
    if (lead == 0xf0) secondLow = 0x90;
    if (lead == 0xf4) secondHigh = 0x8f;
  } else {
    return {};
  }
  if (bytes.size() < decoded.length) return {};

  for (std::size_t i = 1; i < decoded.length; ++i) {
    const unsigned char low = i == 1 ? secondLow : 0x80;
    const unsigned char high = i == 1 ? secondHigh : 0xbf;
    if (bytes[i] < low || bytes[i] > high) return {};
    decoded.value = decoded.value << 6 | (bytes[i] & 0x3fU);
  }
  return decoded;
}

// Collects the low bytes of UTF-16 code units in a small buffer and hands them to the
// digest in chunks, so non-ASCII text costs no allocation.
class LowByteWriter {
 public:
  explicit LowByteWriter(Md5Stream& stream) : stream_(stream) {}

  void writeCodeUnit(char32_t unit) { writeByte(static_cast<unsigned char>(unit & 0xffU)); }

  void writeByte(unsigned char byte) {
    if (used_ == buffer_.size()) flush();
    buffer_[used_++] = byte;
  }

  void flush() {
    stream_.update(Bytes(buffer_).first(used_));
    used_ = 0;
  }

 private:
  Md5Stream& stream_;
  std::array<unsigned char, kBlockSize> buffer_{};
  std::size_t used_ = 0;
};

void writeUtf16LowBytes(Bytes text, LowByteWriter& writer) {
  while (!text.empty()) {
    const CodePoint decoded = decodeUtf8(text);
    if (decoded.length == 0) {
      writer.writeByte(text[0]);
      text = text.subspan(1);
      continue;
    }
    if (decoded.value < 0x10000) {
      writer.writeCodeUnit(decoded.value);
    } else {
      const char32_t offset = decoded.value - 0x10000;
      writer.writeCodeUnit(0xd800 + (offset >> 10));
      writer.writeCodeUnit(0xdc00 + (offset & 0x3ffU));
    }
    text = text.subspan(decoded.length);
  }
  writer.flush();
}

Bytes asBytes(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

std::string CMD5::MD5(std::string_view message) const {
  if (isAscii(message)) return digestBytes(message);
  Md5Stream stream;
  LowByteWriter writer(stream);
  writeUtf16LowBytes(asBytes(message), writer);
  return stream.finishHex();
}

std::string CMD5::digestBytes(std::string_view bytes) {
  Md5Stream stream;
  stream.update(asBytes(bytes));
  return stream.finishHex();
}

}  // namespace brenmoor

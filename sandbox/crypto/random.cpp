#include "crypto/random.h"

#include <openssl/rand.h>

#include <array>
#include <stdexcept>
#include <vector>

#include "crypto/hex.h"

namespace sandbox {
namespace {

void fill_random(std::span<unsigned char> bytes) {
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
    throw std::runtime_error("the random generator failed");
  }
}

}  // namespace

std::string random_hex(std::size_t bytes) {
  std::vector<unsigned char> buffer(bytes);
  fill_random(buffer);
  return to_lower_hex(buffer);
}

std::string random_guid() {
  std::array<unsigned char, 16> bytes{};
  fill_random(bytes);
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);  // RFC 4122 variant
  const std::string hex = to_lower_hex(bytes);
  return hex.substr(0, 8) + '-' + hex.substr(8, 4) + '-' + hex.substr(12, 4) + '-' +
         hex.substr(16, 4) + '-' + hex.substr(20);
}

}  // namespace sandbox

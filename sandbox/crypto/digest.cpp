#include "crypto/digest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <stdexcept>

#include "crypto/hex.h"

namespace sandbox {

std::string md5_hex(std::string_view text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  if (EVP_Digest(text.data(), text.size(), digest, &length, EVP_md5(), nullptr) != 1) {
    throw std::runtime_error("MD5 digest failed");
  }
  return to_lower_hex({digest, length});
}

bool same_digest(std::string_view a, std::string_view b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace sandbox

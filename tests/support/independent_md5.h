#pragma once
// An MD5 from OpenSSL, so that tests do not check the library's digests against themselves.

#include <openssl/evp.h>

#include <string>

namespace brenmoor::testing {

inline std::string md5(const std::string& text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr);
  std::string out;
  for (unsigned i = 0; i < size; ++i) {
    out += "0123456789abcdef"[digest[i] >> 4];
    out += "0123456789abcdef"[digest[i] & 15];
  }
  return out;
}

}  // namespace brenmoor::testing

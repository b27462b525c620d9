#pragma once

#include <string>
#include <string_view>

namespace brenmoor {

// MD5 (RFC 1321) digests, written as 32 lowercase hexadecimal characters.
//
// MD5() hashes text the way the server does: the UTF-8 input is read as UTF-16 code units
// and each unit contributes only its low byte. So U+00E9 enters as 0xE9, U+20AC as 0xAC,
// U+0141 exactly like "A", and a character beyond U+FFFF as the low bytes of its two
// surrogates. Bytes that are not part of well-formed UTF-8 (a stray continuation byte, an
// overlong form, a truncated sequence, an encoded surrogate, a value above U+10FFFF) each
// enter as themselves. Pure ASCII text is therefore hashed exactly as given.
//
// An instance keeps no state between calls; one object serves any number of digests and
// may be shared between threads.
class CMD5 {
 public:
  std::string MD5(std::string_view message) const;

  // Digest of raw bytes, with no text conversion.
  static std::string digestBytes(std::string_view bytes);
};

}  // namespace brenmoor

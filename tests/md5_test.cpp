#include "util/md5.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>
#include <string_view>
#include <utility>

namespace brenmoor {
namespace {

std::string openSslMd5(std::string_view bytes) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_md5(), nullptr);
  std::string hex;
  for (unsigned int i = 0; i < size; ++i) {
    hex += "0123456789abcdef"[digest[i] >> 4];
    hex += "0123456789abcdef"[digest[i] & 15];
  }
  return hex;
}

TEST(Md5, MatchesKnownDigestsAndOpenSslAcrossBlockBoundaries) {
  const CMD5 md5;
  EXPECT_EQ(md5.MD5(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(md5.MD5("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(CMD5::digestBytes("abc"), "900150983cd24fb0d6963f7d28e17f72");
  for (size_t length : {55, 56, 57, 63, 64, 65, 119, 120, 127, 128, 129, 1 << 20}) {
    const std::string message(length, 'q');
    EXPECT_EQ(md5.MD5(message), openSslMd5(message)) << length;
  }
}

// Text enters as the low bytes of its UTF-16 code units; bytes that are not UTF-8 enter as
// themselves.
TEST(Md5, DigestsTextAsUtf16LowBytesAndStrayBytesAsThemselves) {
  const CMD5 md5;
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"caf\u00e9 \u20ac!", "caf\xe9 \xac!"},
      {"\u0141", "A"},
      {"\u0800\uffff", std::string_view("\x00\xff", 2)},
      {"\U0001F600", std::string_view("\x3d\x00", 2)},  // surrogates D83D DE00
      {"\xff\u00e9\x80", "\xff\xe9\x80"},
      {"\xc0\x80", "\xc0\x80"},  // overlong NUL
      {"\xe2\x82", "\xe2\x82"},  // cut short at the end
      {"\xe2\x82"
       "A",
       "\xe2\x82"
       "A"},                                     // cut short before ASCII
      {"\xed\xa0\x80", "\xed\xa0\x80"},          // an encoded surrogate
      {"\xf4\x90\x80\x80", "\xf4\x90\x80\x80"},  // above U+10FFFF
  };
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(md5.MD5(text), openSslMd5(bytes)) << ::testing::PrintToString(text);
  }
  // Every Latin-1 character, many times over, across blocks and conversion buffers.
  std::string text, bytes;
  for (int round = 0; round < 40; ++round) {
    for (int c = 0; c < 256; ++c) {
      bytes += static_cast<char>(c);
      if (c < 0x80) {
        text += static_cast<char>(c);
      } else {
        text += static_cast<char>(0xc0 | c >> 6);
        text += static_cast<char>(0x80 | (c & 0x3f));
      }
    }
  }
  EXPECT_EQ(md5.MD5(text), openSslMd5(bytes));
}

}  // namespace
}  // namespace brenmoor

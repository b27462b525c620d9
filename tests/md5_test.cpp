#include "util/md5.h"

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace brenmoor {
namespace {

std::string openSslMd5(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_md5(), nullptr) != 1)
    return "EVP_Digest failed";
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string hex;
  for (unsigned int i = 0; i < size; ++i) {
    hex += kHexDigits[digest[i] >> 4];
    hex += kHexDigits[digest[i] & 0xfU];
  }
  return hex;
}

bool isLowercaseHexDigest(const std::string& text) {
  return text.size() == 32 && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

TEST(Md5, MatchesRfc1321TestSuite) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"a", "0cc175b9c0f1b6a831c399e269772661"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
       "d174ab98d277d9f5a5611c2c9f419d9f"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  const CMD5 md5;
  for (const auto& [message, expected] : cases) {
    EXPECT_EQ(md5.MD5(message), expected) << message;
    EXPECT_EQ(CMD5::digestBytes(message), expected) << message;
  }
}

TEST(Md5, PaddingBoundariesAndLongInputsMatchOpenSsl) {
  const CMD5 md5;
  for (std::size_t length : {55, 56, 57, 63, 64, 65, 119, 120, 127, 128, 129, 1 << 20}) {
    const std::string message(length, 'q');
    EXPECT_EQ(md5.MD5(message), openSslMd5(message)) << length;
  }
  // Long non-ASCII text crosses both the block and the conversion buffer many times.
  std::string latin1Text;
  std::string latin1Bytes;
  for (int i = 0; i < 5000; ++i) {
    latin1Text += "x\u00e9";
    latin1Bytes += "x\xe9";
  }
  EXPECT_EQ(md5.MD5(latin1Text), openSslMd5(latin1Bytes));
}

TEST(Md5, TextEntersAsLowBytesOfUtf16CodeUnits) {
  const CMD5 md5;
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"\u00e9", "\xe9"},                                 // é
      {"\u20ac", "\xac"},                                 // €
      {"\u0141", "A"},                                    // Ł
      {"\u0080\u07ff", "\x80\xff"},                       // two-byte range ends
      {"\u0800\uffff", std::string_view("\x00\xff", 2)},  // three-byte range ends
      {"\U0001F600", std::string_view("\x3d\x00", 2)},    // surrogates D83D DE00
      {"\U00010000\U0010FFFF", std::string_view("\x00\x00\xff\xff", 4)},
      {"caf\u00e9 \u20ac!", "caf\xe9 \xac!"},
  };
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(md5.MD5(text), CMD5::digestBytes(bytes)) << text;
  }
}

TEST(Md5, InvalidUtf8BytesEnterAsThemselves) {
  const CMD5 md5;
  const std::string_view cases[] = {
      "\x80",  // stray continuation byte
      "a\xbf"
      "b",                 // stray continuation byte inside ASCII
      "\xc0\x80",          // overlong NUL
      "\xc1\xbf",          // overlong U+007F
      "\xe0\x80\x80",      // overlong three-byte form
      "\xf0\x8f\xbf\xbf",  // overlong four-byte form
      "\xe2\x82",          // truncated at the end
      "\xe2\x82"
      "A",                 // truncated before ASCII
      "\xf0\x9f\x98",      // truncated four-byte form
      "\xed\xa0\x80",      // encoded high surrogate
      "\xed\xbf\xbf",      // encoded low surrogate
      "\xf4\x90\x80\x80",  // above U+10FFFF
      "\xf5\x80\x80\x80",  // lead byte never valid
      "\xfe\xff",          // bytes never valid
  };
  for (const std::string_view bytes : cases) {
    EXPECT_EQ(md5.MD5(bytes), CMD5::digestBytes(bytes)) << testing::PrintToString(bytes);
  }
  // Valid neighbours still convert: é becomes E9 around an invalid byte.
  EXPECT_EQ(md5.MD5("\xff\u00e9\x80"), CMD5::digestBytes("\xff\xe9\x80"));
}

// Characters below U+0100 map to a known byte each, so OpenSSL can check the whole path.
TEST(Md5, RandomLatin1TextMatchesOpenSsl) {
  std::mt19937 random(20240611);
  std::uniform_int_distribution<int> lengths(0, 300);
  std::uniform_int_distribution<int> characters(0, 255);
  std::bernoulli_distribution asciiOnly(0.3);
  const CMD5 md5;
  for (int round = 0; round < 400; ++round) {
    const int length = lengths(random);
    const int characterLimit = asciiOnly(random) ? 0x7f : 0xff;
    std::string utf8;
    std::string bytes;
    for (int i = 0; i < length; ++i) {
      const auto character = static_cast<unsigned char>(characters(random) % (characterLimit + 1));
      bytes += static_cast<char>(character);
      if (character < 0x80) {
        utf8 += static_cast<char>(character);
      } else {
        utf8 += static_cast<char>(0xc0 | character >> 6);
        utf8 += static_cast<char>(0x80 | (character & 0x3f));
      }
    }
    const std::string expected = openSslMd5(bytes);
    const std::string text = md5.MD5(utf8);
    EXPECT_EQ(text, expected) << "round " << round << ", length " << length;
    EXPECT_EQ(CMD5::digestBytes(bytes), expected) << "round " << round;
    EXPECT_TRUE(isLowercaseHexDigest(text)) << text;
  }
}

}  // namespace
}  // namespace brenmoor

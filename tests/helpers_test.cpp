#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstdlib>
#include <string_view>
#include <utility>

#include "brenmoor/collection.h"
#include "brenmoor/deployment.h"
#include "brenmoor/zyl_service.h"
#include "util/convert.h"
#include "util/md5.h"
#include "util/time_zone.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

TEST(Convert, ParsesOrRefuses) {
  EXPECT_TRUE(util::toBool(" true "));
  EXPECT_FALSE(util::toBool("0"));
  EXPECT_EQ(util::toInt32("+42"), 42);
  EXPECT_EQ(util::toInt16("-32768"), -32768);
  EXPECT_DOUBLE_EQ(util::toDouble("2.5e3"), 2500.0);
  try {
    util::toInt16("32768");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), Error::Overflow);
  }
  for (const char* bad : {"", "abc", "4 2", "0x10", "1.5"}) {
    try {
      util::toInt32(bad);
      FAIL() << bad;
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), Error::TypeMismatch) << bad;
    }
  }
  EXPECT_THROW(util::toBool("yes"), Error);
}

TEST(TimeZone, AddsTheDaylightShiftOnlyWhileInEffect) {
  const testing::TzGuard saved;
  // One hour east, with daylight time (one more hour) all year round.
  setenv("TZ", "XST-1XDT,J1/0,J365/25", 1);
  EXPECT_EQ(util::localOffsetSeconds(), 7200);
  EXPECT_EQ(util::utcToLocal(Date::fromParts(2024, 1, 1, 12)), Date::fromParts(2024, 1, 1, 14));
  EXPECT_EQ(util::localToUtc(Date::fromParts(2024, 1, 1, 0, 30)),
            Date::fromParts(2023, 12, 31, 22, 30));
  setenv("TZ", "UTC+5", 1);  // POSIX sign: five hours west
  EXPECT_EQ(util::localOffsetSeconds(), -18000);
  EXPECT_EQ(util::utcToLocal(Date::fromParts(2024, 3, 1, 2, 0, 0, 5)),
            Date::fromParts(2024, 2, 29, 21, 0, 0, 5));
}

TEST(DateValue, CountsFromTheZeroDateAndRoundTripsText) {
  EXPECT_EQ(Date().toString(), "1899-12-30 00:00:00");
  EXPECT_EQ(Date::fromParts(1899, 12, 29, 23).toString(), "1899-12-29 23:00:00");
  EXPECT_EQ(Date::fromParts(1900, 1, 1).millisecondsSinceZero(), 2 * 86400000LL);
  EXPECT_EQ(Date::parse("2024-02-29 08:07:06.5")->toString(), "2024-02-29 08:07:06.500");
  EXPECT_EQ(Date::parse("2024-02-29T08:07:06"), Date::fromParts(2024, 2, 29, 8, 7, 6));
  EXPECT_EQ(Date::parse("2024-02-29"), Date::fromParts(2024, 2, 29));
  EXPECT_FALSE(Date::parse("2023-02-29"));
  EXPECT_FALSE(Date::parse("2024-02-29 24:00:00"));
  EXPECT_FALSE(Date::parse("2024-2-29"));
  EXPECT_THROW(Date::fromParts(2024, 13, 1), Error);
  EXPECT_EQ(Date::fromParts(2024, 12, 31, 23, 59, 59, 250).addSeconds(1),
            Date::fromParts(2025, 1, 1, 0, 0, 0, 250));
}

TEST(Records, FlaggedPropertiesRaiseTheirFlagOnEverySetAndListsCountFromOne) {
  DeploymentInfo info;
  EXPECT_FALSE(info.name.occurs());
  info.name = "";
  EXPECT_TRUE(info.name.occurs());
  Collection<DeploymentInfo> list;
  list.Add(std::make_shared<DeploymentInfo>(info));
  EXPECT_TRUE(list.Item(1)->name.occurs());
  for (int32_t bad : {0, 2, -1}) {
    try {
      list.Item(bad);
      FAIL() << bad;
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), Error::SubscriptOutOfRange);
    }
  }
}

TEST(Endpoints, AppendServicePathsToTheBaseAsGiven) {
  ZylService zyl;
  zyl.SetServiceBaseUrl("http://h/");
  EXPECT_EQ(zyl.loginUrl(), "http://h//services/Login");
  EXPECT_EQ(zyl.reportsUrl(), "http://h//services/Reports");
  zyl.SetServiceBaseUrl("");
  EXPECT_EQ(zyl.telvaneUrl(), "/services/Telvane");
  EXPECT_EQ(zyl.baseUrl(), "");
}

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

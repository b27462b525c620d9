#include "soap/upload_url.h"

#include <curl/curl.h>

#include <memory>

namespace brenmoor::soap {
namespace {

bool isHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool mayStand(char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
  return std::string_view("-._~!$&'()*+,;=:@/?").find(c) != std::string_view::npos;
}

struct UrlDeleter {
  void operator()(CURLU* u) const { curl_url_cleanup(u); }
};

struct TextDeleter {
  void operator()(char* text) const { curl_free(text); }
};

std::optional<std::string> part(CURLU* u, CURLUPart which) {
  char* raw = nullptr;
  if (curl_url_get(u, which, &raw, 0) != CURLUE_OK || !raw) return std::nullopt;
  std::unique_ptr<char, TextDeleter> owned(raw);
  return std::string(raw);
}

// Every byte other than letters, digits, - . _ ~ ! $ & ' ( ) * + , ; = : @ / ? and a "%" that
// starts an escape becomes %XX.
std::string encodeTarget(std::string_view target) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(target.size());
  for (size_t i = 0; i < target.size(); ++i) {
    const char c = target[i];
    const bool escape =
        c == '%' && i + 2 < target.size() && isHex(target[i + 1]) && isHex(target[i + 2]);
    if (mayStand(c) || escape) {
      out += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += kHex[byte >> 4];
    out += kHex[byte & 0xF];
  }
  return out;
}

}  // namespace

std::optional<std::string> uploadUrl(std::string_view url) {
  // The authority is left to the parser; only what follows it is encoded.
  const size_t schemeEnd = url.find("://");
  if (schemeEnd == std::string_view::npos) return std::nullopt;
  const size_t targetStart = url.find_first_of("/?", schemeEnd + 3);
  std::string whole(url.substr(0, targetStart));
  if (targetStart != std::string_view::npos) whole += encodeTarget(url.substr(targetStart));

  std::unique_ptr<CURLU, UrlDeleter> u(curl_url());
  if (!u || curl_url_set(u.get(), CURLUPART_URL, whole.c_str(), CURLU_PATH_AS_IS) != CURLUE_OK) {
    return std::nullopt;
  }
  const auto scheme = part(u.get(), CURLUPART_SCHEME);
  const auto host = part(u.get(), CURLUPART_HOST);
  if (!scheme || (*scheme != "http" && *scheme != "https") || !host) return std::nullopt;
  // libcurl decodes escapes in a host it finds after "///", and lets DEL through.
  for (const char c : *host) {
    if (static_cast<unsigned char>(c) <= ' ' || c == '\x7F') return std::nullopt;
  }
  if (curl_url_set(u.get(), CURLUPART_USER, nullptr, 0) != CURLUE_OK ||
      curl_url_set(u.get(), CURLUPART_PASSWORD, nullptr, 0) != CURLUE_OK) {
    return std::nullopt;
  }
  // The parser may end the authority elsewhere than the first "/" after "://" ("http:/h/p",
  // a second "://" later on), leaving bytes that were never encoded: such a URL is refused.
  for (const CURLUPart which : {CURLUPART_PATH, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
    const auto text = part(u.get(), which);
    if (text && encodeTarget(*text) != *text) return std::nullopt;
  }
  return part(u.get(), CURLUPART_URL);
}

}  // namespace brenmoor::soap

#pragma once
// The server's certificate, as calls and uploads judge it: libcurl verifies the peer and its
// host name (never turned off here); these are the outcomes that mean it could not.

#include <curl/curl.h>

#include <string>

namespace brenmoor::soap {

inline bool failedVerification(CURLcode rc) {
  switch (rc) {
    case CURLE_PEER_FAILED_VERIFICATION:  // unknown authority, expired, another host's name
    case CURLE_SSL_CACERT_BADFILE:        // the authorities named cannot be read
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH: return true;
    default: return false;
  }
}

// `url` without its query, which may hold a key.
inline std::string unverifiedText(const std::string& url, const std::string& reason) {
  return "The certificate of " + url.substr(0, url.find('?')) +
         " could not be verified, so nothing was sent: " + reason;
}

}  // namespace brenmoor::soap

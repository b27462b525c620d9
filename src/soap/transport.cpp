#include "soap/transport.h"

#include <curl/curl.h>

#include <cerrno>
#include <chrono>
#include <mutex>

#include "brenmoor/version.h"
#include "soap/failure.h"

namespace brenmoor::soap {
namespace {

using Clock = std::chrono::steady_clock;

void initCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

template <class Handle, void (*Free)(Handle*)>
struct Deleter {
  void operator()(Handle* h) const { Free(h); }
};
using EasyHandle = std::unique_ptr<CURL, Deleter<CURL, curl_easy_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, Deleter<curl_slist, curl_slist_free_all>>;

struct Exchange {
  std::string body;
  std::string contentType;
  bool tooLarge = false;
  bool idleTooLong = false;
  int32_t timeoutMs = 0;
  curl_off_t lastMoved = 0;  // bytes up plus down at the last movement
  Clock::time_point lastMovedAt = Clock::now();
};

size_t onBody(char* data, size_t size, size_t count, void* user) {
  auto& x = *static_cast<Exchange*>(user);
  size_t n = size * count;
  if (x.body.size() + n > HttpTransport::kMaxAnswerBytes) {
    x.tooLarge = true;
    return 0;
  }
  x.body.append(data, n);
  return n;
}

int onProgress(void* user, curl_off_t, curl_off_t down, curl_off_t, curl_off_t up) {
  auto& x = *static_cast<Exchange*>(user);
  auto now = Clock::now();
  if (down + up != x.lastMoved) {
    x.lastMoved = down + up;
    x.lastMovedAt = now;
    return 0;
  }
  if (now - x.lastMovedAt >= std::chrono::milliseconds(x.timeoutMs)) {
    x.idleTooLong = true;
    return 1;
  }
  return 0;
}

std::string charsetOf(std::string_view contentType) {
  auto at = contentType.find("charset=");
  if (at == std::string_view::npos) return {};
  auto value = contentType.substr(at + 8);
  value = value.substr(0, value.find(';'));
  while (!value.empty() && (value.back() == ' ' || value.back() == '"')) value.remove_suffix(1);
  while (!value.empty() && (value.front() == ' ' || value.front() == '"')) value.remove_prefix(1);
  return std::string(value);
}

[[noreturn]] void throwFor(CURLcode rc, CURL* easy, const Exchange& x, const std::string& url,
                           const char* detail) {
  std::string what = detail[0] ? detail : curl_easy_strerror(rc);
  if (x.idleTooLong || rc == CURLE_OPERATION_TIMEDOUT) {
    throw Failure(kTimedOut, "No answer from " + url + " within " + std::to_string(x.timeoutMs) +
                                 " ms of inactivity");
  }
  if (x.tooLarge) {
    throw Failure(kGeneralFailure, "The answer from " + url + " exceeds " +
                                       std::to_string(HttpTransport::kMaxAnswerBytes >> 20) +
                                       " MiB");
  }
  switch (rc) {
    case CURLE_COULDNT_CONNECT: {
      long osErrno = 0;
      curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &osErrno);
      if (osErrno == ETIMEDOUT) throw Failure(kTimedOut, "Connecting to " + url + ": " + what);
      throw Failure(kConnectionRefused, "Connection to " + url + " refused: " + what);
    }
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      throw Failure(kUnusableServer, "The server address \"" + url + "\" cannot be used: " + what);
    case CURLE_BAD_CONTENT_ENCODING:
      throw Failure(kUnusableServer, "The answer from " + url + " cannot be decoded: " + what);
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
      throw Failure(kConnectionReset,
                    "The connection to " + url + " closed before a full answer: " + what);
    default: throw Failure(kGeneralFailure, "HTTP request to " + url + " failed: " + what);
  }
}

}  // namespace

ConnectionPool::ConnectionPool() {
  initCurlOnce();
  CURLSH* share = curl_share_init();
  curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT);
  curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
  share_ = share;
}

ConnectionPool::~ConnectionPool() {
  curl_share_cleanup(static_cast<CURLSH*>(share_));
}

HttpTransport::HttpTransport(ConnectionPool& pool) : pool_(pool) {}

void HttpTransport::setProxy(std::string server, int port) {
  proxy_ = "http://" + server + ":" + std::to_string(port);
}

HttpAnswer HttpTransport::send(const std::string& url, const std::string& requestText) {
  EasyHandle easy(curl_easy_init());
  if (!easy) throw Failure(kGeneralFailure, "Out of memory creating an HTTP request");
  CURL* e = easy.get();
  Exchange x;
  x.timeoutMs = timeoutMs_ > 0 ? timeoutMs_ : kDefaultTimeoutMs;
  char detail[CURL_ERROR_SIZE] = "";
  static const std::string userAgent = std::string("Brenmoor/") + kVersionString;

  curl_slist* list = nullptr;
  for (const std::string& h : {std::string("Content-Type: text/xml; charset=UTF-8"),
                               "SOAPAction: \"" + soapAction_ + "\"", std::string("Expect:")}) {
    curl_slist* grown = curl_slist_append(list, h.c_str());
    if (!grown) {
      curl_slist_free_all(list);
      throw Failure(kGeneralFailure, "Out of memory building HTTP headers");
    }
    list = grown;
  }
  HeaderList headers(list);

  curl_easy_setopt(e, CURLOPT_SHARE, pool_.share());
  curl_easy_setopt(e, CURLOPT_URL, url.c_str());
  curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(e, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  curl_easy_setopt(e, CURLOPT_POST, 1L);
  curl_easy_setopt(e, CURLOPT_POSTFIELDS, requestText.data());
  curl_easy_setopt(e, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(requestText.size()));
  curl_easy_setopt(e, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(e, CURLOPT_USERAGENT, userAgent.c_str());
  curl_easy_setopt(e, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
  // The library has no environment configuration: an empty proxy turns off $http_proxy too.
  curl_easy_setopt(e, CURLOPT_PROXY, proxy_.c_str());
  curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(x.timeoutMs));
  curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, onProgress);
  curl_easy_setopt(e, CURLOPT_XFERINFODATA, &x);
  curl_easy_setopt(e, CURLOPT_WRITEFUNCTION, onBody);
  curl_easy_setopt(e, CURLOPT_WRITEDATA, &x);
  curl_easy_setopt(e, CURLOPT_ERRORBUFFER, detail);

  CURLcode rc = curl_easy_perform(e);
  if (rc != CURLE_OK) throwFor(rc, e, x, url, detail);

  HttpAnswer answer;
  curl_easy_getinfo(e, CURLINFO_RESPONSE_CODE, &answer.status);
  const char* contentType = nullptr;
  curl_easy_getinfo(e, CURLINFO_CONTENT_TYPE, &contentType);
  if (contentType) answer.charset = charsetOf(contentType);
  if ((answer.status < 200 || answer.status > 299) && answer.status != 500) {
    throw Failure(kUnexpectedStatus,
                  "Unexpected HTTP Status code of " + std::to_string(answer.status));
  }
  answer.body = std::move(x.body);
  return answer;
}

}  // namespace brenmoor::soap

#include "soap/transport.h"

#include <curl/curl.h>

#include <strings.h>

#include <cerrno>
#include <chrono>
#include <exception>
#include <mutex>
#include <optional>
#include <vector>

#include "brenmoor/version.h"
#include "soap/answer_parser.h"
#include "soap/failure.h"
#include "soap/idle_watch.h"
#include "soap/tls.h"

namespace brenmoor::soap {
namespace {

void initCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool acceptedStatus(long status) {
  return (status >= 200 && status <= 299) || status == 500;
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

// One transfer: the answer is parsed chunk by chunk as libcurl hands it over.
struct Transfer {
  CURL* easy = nullptr;
  const std::string* url = nullptr;
  const AnswerLimits* limits = nullptr;
  std::optional<AnswerParser> parser;
  std::exception_ptr failure;  // thrown while parsing, kept until libcurl has returned
  long refusedStatus = 0;
  IdleWatch watch;
  curl_off_t lastMoved = 0;       // bytes up plus down at the last movement
  curl_off_t lastMovedAt = 0;     // libcurl's clock, microseconds into the transfer
  std::string* traced = nullptr;  // the answer's bytes, kept only while tracing
  bool html = false;              // the Content-Type says so

  AnswerParser& startParser() {
    const char* contentType = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    const std::string_view type = contentType ? contentType : "";
    html = type.size() >= 9 && strncasecmp(type.data(), "text/html", 9) == 0;
    curl_off_t length = -1;
    curl_easy_getinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    // A length past the limit is refused before a byte of the body is read; an encoded body
    // is counted as it is decoded, since only that size is bounded.
    curl_header* encoding = nullptr;
    if (length > 0 && static_cast<uint64_t>(length) > limits->maxBytes &&
        curl_easy_header(easy, "Content-Encoding", 0, CURLH_HEADER, -1, &encoding) != CURLHE_OK) {
      throw Failure(kGeneralFailure, "The answer from " + *url + " announces " +
                                         std::to_string(length) +
                                         " bytes, past the answer limit of " +
                                         std::to_string(limits->maxBytes) + " bytes");
    }
    return parser.emplace(charsetOf(type), *url, *limits,
                          length > 0 ? static_cast<uint64_t>(length) : 0);
  }

  // A step of the parse. An HTML page (a portal's sign-in page, a proxy's error) fails as
  // what it is, whatever its markup trips over first.
  template <class Step>
  decltype(auto) parsing(Step&& step) {
    try {
      return step();
    } catch (const Failure& f) {
      if (!html || f.code() != kUnusableAnswer) throw;
      throw Failure(kUnusableAnswer,
                    "The answer from " + *url + " is an HTML page, not a SOAP envelope");
    }
  }
};

size_t onBody(char* data, size_t size, size_t count, void* user) {
  auto& x = *static_cast<Transfer*>(user);
  const size_t n = size * count;
  try {
    if (!x.parser) {
      long status = 0;
      curl_easy_getinfo(x.easy, CURLINFO_RESPONSE_CODE, &status);
      if (!acceptedStatus(status)) {
        x.refusedStatus = status;
        return 0;
      }
      x.startParser();
    }
    if (x.traced) x.traced->append(data, n);
    x.parsing([&] { x.parser->feed({data, n}); });
    return n;
  } catch (...) {
    x.failure = std::current_exception();
    return 0;
  }
}

[[noreturn]] void throwUnexpectedStatus(CURL* easy, long status) {
  if (status >= 300 && status <= 399) {
    // The body may have been refused before libcurl worked out the target: read the header.
    curl_header* location = nullptr;
    const bool found =
        curl_easy_header(easy, "Location", 0, CURLH_HEADER, -1, &location) == CURLHE_OK;
    throw Failure(kRedirected, "The server answered HTTP " + std::to_string(status) +
                                   " and sends the request to " +
                                   (found ? std::string(location->value) : "no address"));
  }
  throw Failure(kUnexpectedStatus, "Unexpected HTTP Status code of " + std::to_string(status));
}

[[noreturn]] void throwFor(CURLcode rc, CURL* easy, const Transfer& x, const std::string& url,
                           const char* detail) {
  if (x.failure) std::rethrow_exception(x.failure);
  if (x.refusedStatus) throwUnexpectedStatus(easy, x.refusedStatus);
  std::string what = detail[0] ? detail : curl_easy_strerror(rc);
  if (x.watch.pastDeadline) {
    throw Failure(kPastDeadline, "The whole answer from " + url + " took longer than " +
                                     std::to_string(x.watch.deadlineMs) + " ms");
  }
  if (x.watch.idleTooLong || rc == CURLE_OPERATION_TIMEDOUT) {
    throw Failure(kTimedOut, "No answer from " + url + " within " +
                                 std::to_string(x.watch.timeoutMs) + " ms of inactivity");
  }
  if (failedVerification(rc)) throw Failure(kUnverifiedServer, unverifiedText(url, what));
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
      throw Failure(kUnusableAnswer, "The answer from " + url + " cannot be decoded: " + what);
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_PARTIAL_FILE:
      throw Failure(kConnectionReset,
                    "The connection to " + url + " closed before a full answer: " + what);
    default: throw Failure(kGeneralFailure, "HTTP request to " + url + " failed: " + what);
  }
}

// What a finished transfer gives: the answer, or the failure it ended with.
Answer finish(CURLcode rc, CURL* easy, Transfer& x, const std::string& url, const char* errors) {
  if (rc != CURLE_OK) throwFor(rc, easy, x, url, errors);
  long status = 0;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  if (!acceptedStatus(status)) throwUnexpectedStatus(easy, status);
  if (!x.parser) x.startParser();
  return x.parsing([&] { return x.parser->finish(); });
}

}  // namespace

// One libcurl handle per service object: it keeps its connections, its resolver cache and its
// buffers from call to call. The header lists differ only by the action, one per service. The
// share carries the session's cookies to the upload handles as well.
struct ConnectionPool::Handles {
  CURL* easy = nullptr;
  CURLSH* share = nullptr;
  std::vector<std::pair<std::string, curl_slist*>> headersByAction;
  // What the handle was last given: calls to one service set nothing again.
  std::string url;
  curl_slist* headers = nullptr;
  std::string proxy = "-";
  long connectTimeoutMs = -1;
  char errors[CURL_ERROR_SIZE] = "";
  // The authorities trusted: the host's own file, or libcurl's built-in bundle and directory.
  std::string caFile;
  std::string defaultCaFile;
  std::string defaultCaPath;

  ~Handles() {
    for (auto& [action, list] : headersByAction) curl_slist_free_all(list);
    if (easy) curl_easy_cleanup(easy);
    if (share) curl_share_cleanup(share);  // after the handle that used it
  }

  curl_slist* headersFor(std::string_view action) {
    for (auto& [known, list] : headersByAction) {
      if (known == action) return list;
    }
    curl_slist* list = nullptr;
    const std::string soapAction = "SOAPAction: \"" + std::string(action) + "\"";
    for (const char* h : {"Content-Type: text/xml; charset=UTF-8", soapAction.c_str(), "Expect:"}) {
      curl_slist* grown = curl_slist_append(list, h);
      if (!grown) {
        curl_slist_free_all(list);
        throw Failure(kGeneralFailure, "Out of memory building HTTP headers");
      }
      list = grown;
    }
    headersByAction.emplace_back(std::string(action), list);
    return list;
  }
};

ConnectionPool::ConnectionPool() : handles_(std::make_unique<Handles>()) {
  initCurlOnce();
  CURL* e = curl_easy_init();
  if (!e) throw Failure(kGeneralFailure, "Out of memory creating an HTTP handle");
  handles_->easy = e;
  CURLSH* share = curl_share_init();
  if (!share) throw Failure(kGeneralFailure, "Out of memory creating an HTTP handle");
  handles_->share = share;
  // The built-in places of the system's authorities, to go back to when the host's file is unset.
  char* builtIn = nullptr;
  if (curl_easy_getinfo(e, CURLINFO_CAINFO, &builtIn) == CURLE_OK && builtIn) {
    handles_->defaultCaFile = builtIn;
  }
  builtIn = nullptr;
  if (curl_easy_getinfo(e, CURLINFO_CAPATH, &builtIn) == CURLE_OK && builtIn) {
    handles_->defaultCaPath = builtIn;
  }
  curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
  shareWith(e);
  static const std::string userAgent = std::string("Brenmoor/") + kVersionString;
  curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(e, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  curl_easy_setopt(e, CURLOPT_POST, 1L);
  curl_easy_setopt(e, CURLOPT_USERAGENT, userAgent.c_str());
  curl_easy_setopt(e, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
  curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, IdleWatch::onProgress);
  curl_easy_setopt(e, CURLOPT_WRITEFUNCTION, onBody);
  curl_easy_setopt(e, CURLOPT_BUFFERSIZE, 128L * 1024);
  curl_easy_setopt(e, CURLOPT_ERRORBUFFER, handles_->errors);
}

ConnectionPool::~ConnectionPool() = default;

void ConnectionPool::shareWith(void* easy) {
  // "" turns the cookie engine on without reading a file; nothing names a file to write.
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
  curl_easy_setopt(easy, CURLOPT_SHARE, handles_->share);
  trustWith(easy);
}

void ConnectionPool::trustWith(void* easy) {
  const auto& h = *handles_;
  // libcurl's defaults already, said here so that no other setting can have turned them off.
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  auto orNull = [](const std::string& s) { return s.empty() ? nullptr : s.c_str(); };
  if (h.caFile.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, orNull(h.defaultCaFile));
    curl_easy_setopt(easy, CURLOPT_CAPATH, orNull(h.defaultCaPath));
  } else {
    // The host's file alone, without the system's directory: it names whom it trusts.
    curl_easy_setopt(easy, CURLOPT_CAINFO, h.caFile.c_str());
    curl_easy_setopt(easy, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  }
}

void ConnectionPool::setCaFile(const std::string& path) {
  if (handles_->caFile == path) return;
  handles_->caFile = path;
  trustWith(handles_->easy);
}

HttpTransport::HttpTransport(ConnectionPool& pool, const AnswerLimits& limits)
    : pool_(pool), limits_(limits) {}

void HttpTransport::setProxy(std::string_view server, int port) {
  proxy_ = "http://" + std::string(server) + ":" + std::to_string(port);
}

Answer HttpTransport::send(const std::string& url, std::string_view requestText) {
  auto& h = *pool_.handles_;
  CURL* e = h.easy;
  Transfer x;
  x.easy = e;
  x.watch.easy = e;
  x.url = &url;
  x.limits = &limits_;
  x.watch.timeoutMs = timeoutMs_ > 0 ? timeoutMs_ : kDefaultTimeoutMs;
  x.watch.deadlineMs = deadlineMs_ > 0 ? deadlineMs_ : int64_t{kDeadlineFactor} * x.watch.timeoutMs;

  if (h.url != url) {
    curl_easy_setopt(e, CURLOPT_URL, url.c_str());
    h.url = url;
  }
  if (curl_slist* headers = h.headersFor(soapAction_); headers != h.headers) {
    curl_easy_setopt(e, CURLOPT_HTTPHEADER, headers);
    h.headers = headers;
  }
  if (h.proxy != proxy_) {
    // The library has no environment configuration: an empty proxy turns off $http_proxy too.
    curl_easy_setopt(e, CURLOPT_PROXY, proxy_.c_str());
    h.proxy = proxy_;
  }
  if (h.connectTimeoutMs != x.watch.timeoutMs) {
    curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(x.watch.timeoutMs));
    h.connectTimeoutMs = x.watch.timeoutMs;
  }
  curl_easy_setopt(e, CURLOPT_POSTFIELDS, requestText.data());
  curl_easy_setopt(e, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(requestText.size()));
  curl_easy_setopt(e, CURLOPT_XFERINFODATA, &x.watch);
  curl_easy_setopt(e, CURLOPT_WRITEDATA, &x);
  h.errors[0] = '\0';
  if (!trace_) return finish(curl_easy_perform(e), e, x, url, h.errors);

  std::string answerText;
  x.traced = &answerText;
  const auto started = std::chrono::steady_clock::now();
  const CURLcode rc = curl_easy_perform(e);
  brenmoor::Exchange seen;
  seen.method = "POST";
  seen.url = url;
  seen.soapAction = soapAction_;
  curl_easy_getinfo(e, CURLINFO_RESPONSE_CODE, &seen.status);
  seen.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - started);
  seen.request = requestText;
  seen.answer = answerText;
  try {
    Answer answer = finish(rc, e, x, url, h.errors);
    (*trace_)(seen);
    return answer;
  } catch (const std::exception& failure) {
    seen.failure = failure.what();
    (*trace_)(seen);
    throw;
  }
}

}  // namespace brenmoor::soap

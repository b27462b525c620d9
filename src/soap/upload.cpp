#include "soap/upload.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <system_error>
#include <utility>

#include "brenmoor/version.h"
#include "soap/failure.h"
#include "soap/idle_watch.h"
#include "soap/tls.h"
#include "soap/upload_url.h"
#include "util/convert.h"

namespace brenmoor::soap {
namespace {

constexpr const char* kSendFailedText = "Send Request failed";
constexpr const char* kCancelledText = "Upload cancelled by user request";
// libcurl's upload buffer: how many bytes one read callback may hand over, in whole chunks.
constexpr long kUploadBufferBytes = 128 * FileUpload::kChunkBytes;

class LocalFile {
 public:
  LocalFile() = default;
  LocalFile(const LocalFile&) = delete;
  LocalFile& operator=(const LocalFile&) = delete;
  ~LocalFile() {
    if (fd_ >= 0) ::close(fd_);
  }

  // "" once `path` is open for reading, otherwise why it is not. Only regular files: a FIFO or a
  // device would have no size to send, and opening one must not block.
  std::string open(const std::string& path) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat about {};
    if (fd_ < 0 || ::fstat(fd_, &about) != 0) return "Cannot open " + path + ": " + why();
    if (!S_ISREG(about.st_mode)) return "Cannot open " + path + ": not a regular file";
    size_ = static_cast<uint64_t>(about.st_size);
    ::posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
    return {};
  }

  // Fills `into` with the next `n` bytes: "" or why it could not.
  std::string read(char* into, size_t n, const std::string& path, uint64_t before) {
    for (size_t got = 0; got < n;) {
      const ssize_t r = ::read(fd_, into + got, n - got);
      if (r < 0 && errno == EINTR) continue;
      if (r < 0) return "Cannot read " + path + ": " + why();
      if (r == 0) {
        return "Cannot read " + path + ": it ended after " + std::to_string(before + got) + " of " +
               std::to_string(size_) + " bytes";
      }
      got += static_cast<size_t>(r);
    }
    return {};
  }

  uint64_t size() const { return size_; }

 private:
  static std::string why() { return std::generic_category().message(errno); }

  int fd_ = -1;
  uint64_t size_ = 0;
};

struct Transfer {
  LocalFile file;
  const std::string* path = nullptr;
  std::string filename;  // as the events name it
  const UploadEvents* events = nullptr;
  const std::atomic<bool>* cancel = nullptr;
  char* chunk = nullptr;  // the one buffer every chunk is read into
  size_t chunkSize = 0;
  size_t chunkGiven = 0;  // of the chunk in the buffer, bytes already handed to libcurl
  uint64_t taken = 0;     // bytes read from the file
  bool cancelled = false;
  std::string fileError;
  std::exception_ptr thrown;  // by an event handler, kept until libcurl has returned

  std::string answer;
  bool answerCut = false;

  IdleWatch watch;  // no deadline: a large file may take long, as long as it moves

  // The next chunk into the buffer; false when the upload must stop before it.
  bool nextChunk() {
    if (*cancel) {
      cancelled = true;
      return false;
    }
    const auto n =
        static_cast<size_t>(std::min<uint64_t>(FileUpload::kChunkBytes, file.size() - taken));
    fileError = file.read(chunk, n, *path, taken);
    if (!fileError.empty()) return false;
    chunkSize = n;
    chunkGiven = 0;
    taken += n;
    return true;
  }

  void chunkHandedOver() {
    if (events->fileProgress)
      events->fileProgress(
          util::percentHalfEven(static_cast<int64_t>(taken), static_cast<int64_t>(file.size())),
          filename);
    if (events->yield) events->yield();
  }
};

size_t onRead(char* out, size_t, size_t room, void* user) {
  auto& x = *static_cast<Transfer*>(user);
  size_t given = 0;
  try {
    while (given < room) {
      if (x.chunkGiven == x.chunkSize) {
        if (x.taken == x.file.size()) break;
        if (!x.nextChunk()) return CURL_READFUNC_ABORT;
      }
      const size_t n = std::min(x.chunkSize - x.chunkGiven, room - given);
      std::memcpy(out + given, x.chunk + x.chunkGiven, n);
      given += n;
      x.chunkGiven += n;
      if (x.chunkGiven == x.chunkSize) x.chunkHandedOver();
    }
  } catch (...) {
    x.thrown = std::current_exception();
    return CURL_READFUNC_ABORT;
  }
  return given;
}

// One read of the answer: its first kMaxAnswerBytes, after which the transfer stops.
size_t onAnswer(char* data, size_t, size_t n, void* user) {
  auto& x = *static_cast<Transfer*>(user);
  const size_t take = std::min(n, FileUpload::kMaxAnswerBytes - x.answer.size());
  x.answer.append(data, take);
  x.answerCut = take < n;
  return take;
}

struct Outcome {
  Outcome(FileUpload::Code c = FileUpload::kNone, std::string m = {}, std::string d = {})
      : code(c), message(std::move(m)), detail(std::move(d)) {}
  FileUpload::Code code;
  std::string message;
  std::string detail;  // for the trace only
  long status = 0;
};

Outcome classify(CURLcode rc, const Transfer& x, const std::string& url, const char* errors) {
  if (x.thrown) std::rethrow_exception(x.thrown);
  if (x.cancelled) return {FileUpload::kCancelled, kCancelledText};
  if (!x.fileError.empty()) return {FileUpload::kSendFailed, x.fileError};
  // Also when the connection failed after the page had answered: its reason beats ours.
  if (x.answer.find("Error:") != std::string::npos) return {FileUpload::kErrorAnswer, x.answer};
  if (rc == CURLE_OK || (rc == CURLE_WRITE_ERROR && x.answerCut)) return {};
  if (failedVerification(rc)) {
    return {FileUpload::kSendFailed,
            unverifiedText(url, errors[0] ? errors : curl_easy_strerror(rc))};
  }
  if (x.watch.idleTooLong || rc == CURLE_OPERATION_TIMEDOUT) {
    return {FileUpload::kSendFailed, "Upload to " + url + " timed out: no byte moved for " +
                                         std::to_string(x.watch.timeoutMs) + " ms"};
  }
  return {FileUpload::kSendFailed, kSendFailedText, errors[0] ? errors : curl_easy_strerror(rc)};
}

}  // namespace

struct FileUpload::Handle {
  CURL* easy = nullptr;
  curl_slist* headers = nullptr;
  char errors[CURL_ERROR_SIZE] = "";
  std::array<char, kChunkBytes> chunk{};
  bool busy = false;

  ~Handle() {
    if (easy) curl_easy_cleanup(easy);
    curl_slist_free_all(headers);
  }
};

FileUpload::FileUpload(ConnectionPool& pool, UploadEvents events, int32_t inactivityTimeoutMs,
                       const TraceHandler* trace)
    : handle_(std::make_unique<Handle>()),
      events_(std::move(events)),
      timeoutMs_(inactivityTimeoutMs > 0 ? inactivityTimeoutMs : HttpTransport::kDefaultTimeoutMs),
      trace_(trace) {
  CURL* e = curl_easy_init();
  if (!e) throw Failure(kGeneralFailure, "Out of memory creating an HTTP handle");
  handle_->easy = e;
  for (const char* h : {"Content-Type:", "Expect:"}) {
    curl_slist* grown = curl_slist_append(handle_->headers, h);
    if (!grown) throw Failure(kGeneralFailure, "Out of memory building HTTP headers");
    handle_->headers = grown;
  }
  const std::string userAgent = std::string("Brenmoor/") + kVersionString;
  curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(e, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_0);
  curl_easy_setopt(e, CURLOPT_POST, 1L);
  curl_easy_setopt(e, CURLOPT_HTTPHEADER, handle_->headers);
  curl_easy_setopt(e, CURLOPT_USERAGENT, userAgent.c_str());
  curl_easy_setopt(e, CURLOPT_PROXY, "");
  curl_easy_setopt(e, CURLOPT_FORBID_REUSE, 1L);  // one connection per file
  curl_easy_setopt(e, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(e, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(e, CURLOPT_XFERINFOFUNCTION, IdleWatch::onProgress);
  curl_easy_setopt(e, CURLOPT_READFUNCTION, onRead);
  curl_easy_setopt(e, CURLOPT_WRITEFUNCTION, onAnswer);
  curl_easy_setopt(e, CURLOPT_UPLOAD_BUFFERSIZE, kUploadBufferBytes);
  curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeoutMs_));
  curl_easy_setopt(e, CURLOPT_ERRORBUFFER, handle_->errors);
  pool.shareWith(e);
}

FileUpload::~FileUpload() = default;

std::string FileUpload::send(const std::string& url, const std::string& localPath) {
  cancelled_ = false;
  lastCode_ = kNone;
  lastMessage_.clear();
  Handle& h = *handle_;
  if (h.busy) {  // called again from an event handler: the transfer under way keeps the handle
    lastCode_ = kSendFailed;
    lastMessage_ = kSendFailedText;
    return {};
  }
  const auto started = std::chrono::steady_clock::now();
  Transfer x;
  x.path = &localPath;
  x.filename = localPath.substr(localPath.find_last_of("\\/") + 1);
  x.events = &events_;
  x.cancel = &cancelled_;
  x.chunk = h.chunk.data();
  x.watch.easy = h.easy;
  x.watch.timeoutMs = timeoutMs_;

  Outcome out;
  std::string opened = x.file.open(localPath);
  const auto target = uploadUrl(url);
  if (!opened.empty()) {
    out = {kSendFailed, std::move(opened)};
  } else if (!target) {
    out = {kSendFailed, kSendFailedText, "the URL cannot be used"};
  } else {
    CURL* e = h.easy;
    curl_easy_setopt(e, CURLOPT_URL, target->c_str());
    curl_easy_setopt(e, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(x.file.size()));
    curl_easy_setopt(e, CURLOPT_READDATA, &x);
    curl_easy_setopt(e, CURLOPT_WRITEDATA, &x);
    curl_easy_setopt(e, CURLOPT_XFERINFODATA, &x.watch);
    h.errors[0] = '\0';
    h.busy = true;
    const CURLcode rc = curl_easy_perform(e);
    h.busy = false;
    out = classify(rc, x, url, h.errors);
    curl_easy_getinfo(e, CURLINFO_RESPONSE_CODE, &out.status);
  }
  lastCode_ = out.code;
  lastMessage_ = out.message;

  if (trace_) {
    std::string request("<");
    request.append(std::to_string(x.file.size())).append(" bytes from ").append(localPath);
    request += '>';
    std::string failure;
    if (out.code != kNone && out.code != kErrorAnswer) {
      failure = out.detail.empty() ? out.message : out.message + ": " + out.detail;
    }
    brenmoor::Exchange seen;
    seen.method = "POST";
    seen.url = url;
    seen.status = out.status;
    seen.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - started);
    seen.request = request;
    seen.answer = x.answer;
    seen.failure = failure;
    (*trace_)(seen);
  }
  return out.code == kNone ? x.answer : std::string();
}

}  // namespace brenmoor::soap

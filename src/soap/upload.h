#pragma once
// Sends a local file as the raw body of an HTTP/1.0 POST and reads the page's short answer, with
// an event after every 4096-byte chunk and a cancel flag looked at before each. The wire form is
// in docs/protocol.md, "Uploads".

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "brenmoor/trace.h"
#include "soap/transport.h"

namespace brenmoor::soap {

// Called on the caller's thread, between chunks; either may call FileUpload::cancel().
struct UploadEvents {
  std::function<void(int32_t percent, const std::string& filename)> fileProgress;
  std::function<void()> yield;
};

// One object sends the files of one caller, one after another, over its own libcurl handle that
// shares the pool's cookies. It must not outlive the pool.
class FileUpload {
 public:
  enum Code : int32_t { kNone = 0, kSendFailed = 1, kCancelled = 2, kErrorAnswer = 3 };
  static constexpr size_t kChunkBytes = 4096;
  static constexpr size_t kMaxAnswerBytes = 1024;

  FileUpload(ConnectionPool& pool, UploadEvents events,
             int32_t inactivityTimeoutMs = HttpTransport::kDefaultTimeoutMs,
             const TraceHandler* trace = nullptr);
  ~FileUpload();
  FileUpload(const FileUpload&) = delete;
  FileUpload& operator=(const FileUpload&) = delete;

  // Takes effect before the next chunk of the file being sent; send() clears it as it starts.
  void cancel() { cancelled_ = true; }
  bool cancelRequested() const { return cancelled_; }

  // The answer's text (its first 1024 bytes), or "" with lastCode() and lastMessage() saying why:
  // kSendFailed ("Send Request failed", a time-out, or a file that cannot be read, naming it),
  // kCancelled ("Upload cancelled by user request"), kErrorAnswer (the answer, which holds
  // "Error:"). An exception thrown by an event handler stops the file and leaves send() as it is.
  std::string send(const std::string& url, const std::string& localPath);

  // What the last send() ended with; kNone and "" after an answer was returned.
  int32_t lastCode() const { return lastCode_; }
  const std::string& lastMessage() const { return lastMessage_; }

 private:
  struct Handle;

  std::unique_ptr<Handle> handle_;
  UploadEvents events_;
  int32_t timeoutMs_;
  const TraceHandler* trace_;
  std::atomic<bool> cancelled_{false};
  int32_t lastCode_ = kNone;
  std::string lastMessage_;
};

}  // namespace brenmoor::soap

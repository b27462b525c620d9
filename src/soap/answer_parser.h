#pragma once
// Builds an Answer while its body arrives: the transport hands over each chunk as it comes, so
// the body is never held whole.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "soap/answer.h"

namespace brenmoor::soap {

class AnswerParser {
 public:
  // `charset` from the Content-Type (empty: the document says, or UTF-8); `source` names the
  // server in error texts; `expectedBytes`, when known, lets the answer take its room at once.
  AnswerParser(std::string_view charset, std::string source, const AnswerLimits& limits,
               uint64_t expectedBytes = 0);
  ~AnswerParser();
  AnswerParser(const AnswerParser&) = delete;
  AnswerParser& operator=(const AnswerParser&) = delete;

  // Throws Failure as soon as the text cannot become a usable answer or passes a limit.
  void feed(std::string_view chunk);
  // The body is complete. Throws Failure for a truncated or unusable answer, and kServerFault
  // for a SOAP Fault in the envelope namespace.
  Answer finish();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace brenmoor::soap

#pragma once

#include <filesystem>
#include <string>

namespace sandbox {

// A message as sendEmail hands it over. The header fields must already be single lines.
struct OutgoingMessage {
  std::string from;
  std::string to;
  std::string subject;
  std::string body;
};

// The sandbox sends nothing: each message becomes DATA/outbox/ID.eml, an RFC 5322 file
// with From, To, Subject, Date and Message-ID. Answers ID. Throws std::runtime_error when
// the file cannot be written.
std::string write_to_outbox(const std::filesystem::path& data_dir, const OutgoingMessage& message);

}  // namespace sandbox

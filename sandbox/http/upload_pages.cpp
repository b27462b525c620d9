#include "http/upload_pages.h"

#include <httplib.h>
#include <strings.h>

#include <charconv>
#include <fstream>
#include <optional>

#include "assets/stored_files.h"
#include "crypto/random.h"
#include "dispatch/session_key.h"
#include "http/guarded_server.h"
#include "soap/clip.h"
#include "store/database.h"
#include "store/project_store.h"
#include "store/quota_store.h"
#include "store/upload_store.h"

namespace sandbox {
namespace {

constexpr std::string_view kManagedPage = "/AssetManager/am_Asset_BinaryUpload.jsp";
constexpr std::string_view kUnmanagedPagePath = "/AssetManager/am_Asset_Unmanaged_BinaryUpload.jsp";

// Where an admitted upload goes, before its body is read.
struct Admitted {
  Upload upload;
  std::string url;  // unmanaged: where the file will be served
};

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string_view page_of(std::string_view path) {
  if (path == kManagedPage) return kBasePage;
  if (path == std::string(kFixedUrlPrefix) + std::string(kManagedPage)) return kFixedPage;
  if (path == kUnmanagedPagePath) return kUnmanagedPage;
  return {};
}

std::optional<std::uint64_t> announced_length(const httplib::Request& request) {
  if (!request.has_header("Content-Length")) return std::nullopt;
  const std::string text = request.get_header_value("Content-Length");
  std::uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return length;
}

// Without a length or chunking the body is empty; reading would wait for the peer to close.
bool announces_body(const httplib::Request& request) {
  return request.has_header("Content-Length") ||
         strcasecmp(request.get_header_value("Transfer-Encoding").c_str(), "chunked") == 0;
}

// The last piece of the client's name, reduced to characters that are safe in a URL path
// and hold no comma (the answer is split at commas).
std::string url_file_name(std::string_view name) {
  name = name.substr(
      name.find_last_of("/\\") == std::string_view::npos ? 0 : name.find_last_of("/\\") + 1);
  std::string safe;
  for (char c : name.substr(0, 100)) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '.' || c == '_' || c == '-';
    safe += plain ? c : '_';
  }
  return safe.empty() ? "file" : safe;
}

Admitted admit(Database& db, const ServerInfo& server, std::string_view page,
               const httplib::Request& request, std::uint64_t length) {
  const Session session = verify_session_key(db, request.get_param_value("key"));
  if (!session.account_id) throw Refusal("No account selected");
  if (auto refusal = quota_refusal(db, server.quotas, QuotaKind::storage, *session.account_id,
                                   static_cast<double>(length))) {
    throw Refusal(*refusal);
  }

  Admitted admitted;
  Upload& upload = admitted.upload;
  upload.key = random_guid();
  upload.account_id = *session.account_id;
  upload.page = page;
  if (page != kUnmanagedPage) {
    upload.path = managed_upload_path(upload.key);
    return admitted;
  }
  const std::string project = request.get_param_value("pid");
  if (!project_in_account(db, upload.account_id, project)) {
    throw Refusal("No project with the guid '" + clip(project) + "'");
  }
  upload.project_guid = project;
  upload.name = clip(request.get_param_value("name"), 255);
  upload.file_type = clip(request.get_param_value("filetype"), 64);
  upload.path = project_upload_path(project, upload.key);
  upload.timed_data = random_hex(16);
  admitted.url = server.base_url + "/unmanaged/" + upload.key + "/" + url_file_name(upload.name);
  return admitted;
}

}  // namespace

bool UploadPages::serves(std::string_view path) {
  return !page_of(path).empty();
}

void UploadPages::handle(const httplib::Request& request, httplib::Response& response,
                         const httplib::ContentReader& read_content) {
  const std::string_view page = page_of(collapse_slashes(request.path));
  std::optional<Admitted> admitted;
  std::string refusal;
  const auto length = announced_length(request);
  const std::string too_large =
      "the file is larger than the sandbox accepts (" + std::to_string(max_bytes_) + " bytes)";
  if (length && *length > max_bytes_) {
    // Refused before a byte of it is read; the connection cannot carry another request.
    response.status = 413;
    response.set_content("Error: " + too_large, "text/plain");
    GuardedServer::close_after_answer(response);
    return;
  }
  dispatcher_.with_store([&](Database& db) {
    try {
      admitted = admit(db, server_, page, request, length.value_or(0));
    } catch (const std::exception& error) {
      refusal = error.what();
    }
  });

  const bool has_body = announces_body(request);
  // A refused body is still read (up to the limit), so that a client that sends it all
  // before reading the answer gets to see the refusal.
  if (!admitted) {
    std::uint64_t dropped = 0;
    if (has_body && !read_content([&](const char*, std::size_t size) {
          return (dropped += size) <= max_bytes_;
        })) {
      GuardedServer::close_after_answer(response);
    }
    response.status = 200;
    response.set_content("Error: " + refusal, "text/plain");
    return;
  }

  const std::filesystem::path file = server_.data_dir / admitted->upload.path;
  std::filesystem::path partial = file;
  partial += ".part";
  std::uint64_t received = 0;
  bool stored = true;
  {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    std::ofstream out(partial, std::ios::binary | std::ios::trunc);
    stored = static_cast<bool>(out);
    const bool complete = !has_body || read_content([&](const char* data, std::size_t size) {
      received += size;
      if (received > max_bytes_) return false;
      if (stored) stored = static_cast<bool>(out.write(data, static_cast<std::streamsize>(size)));
      return true;
    });
    out.close();
    if (!complete) {
      refusal = received > max_bytes_ ? too_large : "the body ended before its Content-Length";
      if (received > max_bytes_) response.status = 413;
      GuardedServer::close_after_answer(response);
    } else if (!stored || !out) {
      refusal = "the sandbox could not store the file";
    }
  }

  std::error_code error;
  if (refusal.empty()) std::filesystem::rename(partial, file, error);
  if (refusal.empty() && error) refusal = "the sandbox could not store the file";
  if (refusal.empty()) {
    admitted->upload.size = static_cast<std::int64_t>(received);
    dispatcher_.with_store([&](Database& db) {
      // A body without a length is weighed once it has arrived.
      if (auto over = quota_refusal(db, server_.quotas, QuotaKind::storage,
                                    admitted->upload.account_id, static_cast<double>(received))) {
        refusal = *over;
        return;
      }
      try {
        insert_upload(db, admitted->upload);
      } catch (const std::exception&) {
        refusal = "the sandbox could not record the file";
      }
    });
  }
  if (!refusal.empty()) {
    std::filesystem::remove(partial, error);
    std::filesystem::remove(file, error);
    if (response.status != 413) response.status = 200;
    response.set_content("Error: " + refusal, "text/plain");
    return;
  }
  response.status = 200;
  response.set_content(page == kUnmanagedPage ? admitted->url + "," + std::to_string(received) +
                                                    "," + *admitted->upload.timed_data
                                              : admitted->upload.key,
                       "text/plain");
}

}  // namespace sandbox

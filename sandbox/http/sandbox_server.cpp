#include "http/sandbox_server.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <strings.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "assets/stored_files.h"
#include "http/guarded_server.h"
#include "http/request_log.h"
#include "services/services.h"
#include "store/demo_seed.h"
#include "store/record_columns.h"
#include "store/schema.h"
#include "viewers/simulated_viewers.h"
#include "wsdl/service_wsdl.h"

namespace sandbox {
namespace {

constexpr std::size_t kMaxRequestBody = 16 * 1024 * 1024;

std::filesystem::path prepare_database_file(const std::filesystem::path& data_dir) {
  std::filesystem::create_directories(data_dir);
  return data_dir / "sandbox.sqlite3";
}

// Only numeric addresses: binding must never wait on a name lookup.
ServerOptions with_numeric_host(ServerOptions options) {
  if (options.host == "localhost") options.host = "127.0.0.1";
  unsigned char address[16];
  if (inet_pton(AF_INET, options.host.c_str(), address) != 1 &&
      inet_pton(AF_INET6, options.host.c_str(), address) != 1) {
    throw std::invalid_argument("--host must be a numeric IP address, not '" + options.host + "'");
  }
  return options;
}

// Without a length or chunking the body is empty; reading would wait for the peer to close.
bool announces_body(const httplib::Request& request) {
  return request.has_header("Content-Length") ||
         strcasecmp(request.get_header_value("Transfer-Encoding").c_str(), "chunked") == 0;
}

// Refuses a body over `limit` with 413 as soon as its length or its bytes pass the limit, and
// a broken one with 400; either way the rest is left unread and the connection closed.
bool read_body(const httplib::Request& request, const httplib::ContentReader& read_content,
               std::size_t limit, std::string& body, httplib::Response& response) {
  if (!announces_body(request)) return true;
  bool oversized = request.get_header_value<std::uint64_t>("Content-Length") > limit;
  if (!oversized && read_content([&](const char* data, std::size_t length) {
        oversized = body.size() + length > limit;
        if (!oversized) body.append(data, length);
        return !oversized;
      })) {
    return true;
  }
  response.status = oversized ? 413 : 400;
  if (oversized) {
    response.set_content("The request body is larger than the sandbox accepts (" +
                             std::to_string(limit) + " bytes)\n",
                         "text/plain");
  }
  GuardedServer::close_after_answer(response);
  return false;
}

// Only POST bodies are read: httplib would read any other whole into memory.
bool refused_body(const httplib::Request& request, httplib::Response& response) {
  if (request.method == "POST" || !announces_body(request)) return false;
  if (request.has_header("Content-Length") &&
      request.get_header_value<std::uint64_t>("Content-Length") == 0) {
    return false;
  }
  response.status = 413;
  response.set_content("Only POST requests may carry a body\n", "text/plain");
  GuardedServer::close_after_answer(response);
  return true;
}

std::string url_host(const std::string& host) {
  return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

}  // namespace

SandboxServer::SandboxServer(const ServerOptions& options)
    : options_(with_numeric_host(options)),
      db_(prepare_database_file(options.data_dir)),
      info_{options.version, "", options.data_dir, options.quotas, options.deployments_disabled},
      dispatcher_(db_, info_, all_services(), options.process_step),
      upload_pages_(dispatcher_, info_, options.max_upload_bytes),
      file_pages_(dispatcher_, info_),
      viewer_pages_(dispatcher_),
      admin_pages_(dispatcher_),
      http_(std::make_unique<GuardedServer>(options.connection_limits)) {
  create_schema(db_);
  remove_partial_files(options_.data_dir);
  if (options_.seed || has_no_users(db_)) seed_demo_data(db_);
  install_routes(options_.log);
}

SandboxServer::~SandboxServer() {
  stop();
}

void SandboxServer::install_routes(bool log) {
  // Uploads may be far larger than SOAP requests; the SOAP handler keeps its own limit.
  http_->set_payload_max_length(static_cast<std::size_t>(
      std::max<std::uint64_t>(kMaxRequestBody, options_.max_upload_bytes)));
  // A body's limit is known from its length before the client sends it.
  http_->set_expect_100_continue_handler(
      [this](const httplib::Request& request, httplib::Response& response) {
        const std::uint64_t limit = UploadPages::serves(collapse_slashes(request.path))
                                        ? options_.max_upload_bytes
                                        : kMaxRequestBody;
        if (request.get_header_value<std::uint64_t>("Content-Length") <= limit) return 100;
        response.set_content("The request body is larger than the sandbox accepts (" +
                                 std::to_string(limit) + " bytes)\n",
                             "text/plain");
        GuardedServer::close_after_answer(response);
        return response.status = 413;
      });

  http_->set_pre_routing_handler(
      [this, log](const httplib::Request& request, httplib::Response& response) {
        if (log) request_log::begin();
        if (refused_body(request, response)) return httplib::Server::HandlerResponse::Handled;
        const Service* service =
            request.method == "POST" ? nullptr : dispatcher_.find_service(request.path);
        if (!service) return httplib::Server::HandlerResponse::Unhandled;
        if (request.method == "GET" && request.get_param_value("xsd") == "soapenc") {
          response.set_content(encoding_schema(), "text/xml; charset=utf-8");
          return httplib::Server::HandlerResponse::Handled;
        }
        if (request.method == "GET" && (request.has_param("wsdl") || request.has_param("WSDL"))) {
          // The address the client used, so that a toolkit posts where it fetched from.
          const std::string host = request.get_header_value("Host");
          const std::string base = host.empty() ? info_.base_url : "http://" + host;
          response.set_content(service_wsdl(*service, base + request.path),
                               "text/xml; charset=utf-8");
          return httplib::Server::HandlerResponse::Handled;
        }
        response.status = 405;
        response.set_header("Allow", "POST");
        response.set_content("Service endpoints accept POST only\n", "text/plain");
        return httplib::Server::HandlerResponse::Handled;
      });

  // Reading the body ourselves keeps httplib's 8 KiB cap on form-encoded bodies out of the
  // way of clients that send SOAP with the wrong content type.
  http_->Post(".*", [this, log](const httplib::Request& request, httplib::Response& response,
                                const httplib::ContentReader& read_content) {
    if (UploadPages::serves(collapse_slashes(request.path))) {
      upload_pages_.handle(request, response, read_content);
      return;
    }
    const Service* service = dispatcher_.find_service(request.path);
    std::string body;
    if (!read_body(request, read_content, kMaxRequestBody, body, response)) return;
    if (ViewerPages::serves(collapse_slashes(request.path))) {
      viewer_pages_.handle_post(request, body, response);
      return;
    }
    if (!service) {
      response.status = 404;
      response.set_content("No service at this path\n", "text/plain");
      return;
    }
    Outcome outcome = dispatcher_.handle(*service, body, request.get_header_value("Cookie"));
    if (log) request_log::describe(service->name, outcome.operation, outcome.key_note);
    response.status = outcome.status;
    if (!outcome.set_cookie.empty()) response.set_header("Set-Cookie", outcome.set_cookie);
    response.set_content(std::move(outcome.body), "text/xml; charset=utf-8");
  });

  http_->Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
    if (AdminPages::serves(collapse_slashes(request.path))) return admin_pages_.handle(response);
    if (ViewerPages::serves(collapse_slashes(request.path))) {
      return viewer_pages_.handle_get(request, response);
    }
    file_pages_.handle(request, response);
  });

  if (log) {
    http_->set_logger([](const httplib::Request& request, const httplib::Response& response) {
      request_log::finish(request.method, request.path, response.status);
    });
  }
}

int SandboxServer::start() {
  const int port = http_->bind_listener(options_.host, options_.port);
  if (port < 0) {
    throw std::runtime_error("cannot listen on " + options_.host + ":" +
                             std::to_string(options_.port));
  }
  info_.base_url = "http://" + url_host(options_.host) + ":" + std::to_string(port);

  listener_ = std::thread([this] { http_->listen_after_bind(); });
  // The socket already accepts connections; this only makes stop() effective at once.
  for (int attempt = 0; attempt < 5000 && !http_->is_running(); ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return port;
}

void SandboxServer::simulate_viewers(int count, std::uint32_t seed) {
  dispatcher_.with_store(
      [&](Database& db) { sandbox::simulate_viewers(db, count, seed, info_.base_url, now_ms()); });
}

void SandboxServer::stop() {
  if (listener_.joinable()) {
    http_->stop();
    listener_.join();
  }
  dispatcher_.stop_processes();
}

}  // namespace sandbox

#pragma once

#include <gtest/gtest.h>
#include <httplib.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "http/sandbox_server.h"

namespace sandbox::testing {

inline constexpr std::string_view kLoginNs = "urn:telvane-login";
inline constexpr std::string_view kMainNs = "urn:telvane-main";

// One SOAP answer: status and the parsed body.
struct Answer {
  int status = 0;
  std::string body;
  std::string set_cookie;  // the Set-Cookie header, if any
  pugi::xml_document document;

  // Text of the wrapper's single return element.
  std::string value() const;
  // The record a return element or array item points at (href="#idN").
  pugi::xml_node referenced(pugi::xml_node reference) const;
  pugi::xml_node return_element() const;
  std::string fault_string() const;
  // The service's own Fault entry of an application fault; empty otherwise.
  pugi::xml_node application_fault() const;
};

// An argument element as the client writes it: <name XI:type="XS:type">text</name>.
std::string arg(std::string_view name, std::string_view type, std::string_view text);

// A sandbox serving from a fresh folder, and a client to it.
class SandboxTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Serves from data_dir_ with options_, which tests may change before a restart.
  void start_server();
  void stop_server() { server_.reset(); }

  // The request envelope as the client writes it.
  static std::string envelope(std::string_view ns, std::string_view operation,
                              std::string_view arguments);
  // POSTs the client's request envelope for `operation` in `ns` to /services/`service`.
  Answer call(std::string_view service, std::string_view ns, std::string_view operation,
              std::string_view arguments = "");
  Answer post(std::string_view path, std::string_view body);

  // Signs in as the demo user and keeps the session cookie, which later requests send as a
  // client's cookie engine would; afterwards key() gives keys with counters 1, 2, ...
  void login();
  std::string key();
  std::string key_with(std::int64_t counter) const;
  // The next key's text alone, as the upload pages take it in their query string.
  std::string key_text();

  std::filesystem::path data_dir_;
  ServerOptions options_;
  std::unique_ptr<SandboxServer> server_;
  std::unique_ptr<httplib::Client> client_;
  std::string token_;
  std::string secret_;
  std::string cookie_;  // "name=value", sent with every request once set
  std::int64_t counter_ = 0;
};

}  // namespace sandbox::testing

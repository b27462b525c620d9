#include "trace.h"

#include <pugixml.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>

namespace brenmoor::cli {
namespace {

constexpr const char* kMask = "…";

std::string_view localName(std::string_view name) {
  const auto colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

bool isDigest(std::string_view text) {
  return text.size() == 32 && text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
}

void replaceAll(std::string& text, const std::string& secret) {
  if (secret.empty()) return;
  for (auto at = text.find(secret); at != text.npos; at = text.find(secret, at)) {
    text.replace(at, secret.size(), kMask);
  }
}

// Texts that are not XML (error pages, cut answers) keep their words but lose anything that
// looks like a key or a digest.
std::string maskText(std::string text, const std::string& token) {
  replaceAll(text, token);
  static const std::regex key(R"([^\s<>:"']+:(\d+):[0-9a-fA-F]{32})");
  static const std::regex digest("[0-9a-fA-F]{32}");
  text = std::regex_replace(text, key, "…:$1:…");
  return std::regex_replace(text, digest, kMask);
}

class Masker : public pugi::xml_tree_walker {
 public:
  explicit Masker(std::string& token) : token_(token) {}

  bool for_each(pugi::xml_node& node) override {
    if (node.type() != pugi::node_pcdata && node.type() != pugi::node_cdata) return true;
    const pugi::xml_node element = node.parent();
    const std::string_view name = localName(element.name());
    const std::string_view parent = localName(element.parent().name());
    std::string text = node.value();
    if (parent == "userLoginResponse") token_ = text;
    if (name == "key") {
      const auto first = text.find(':'), last = text.rfind(':');
      text = first < last ? kMask + text.substr(first, last - first + 1) + kMask : kMask;
    } else if (name == "password" || name == "response" || name == "challenge" ||
               parent == "userLoginResponse" || parent == "getChallengeResponse" ||
               isDigest(text)) {
      text = kMask;
    } else {
      replaceAll(text, token_);
    }
    node.set_value(text.c_str());
    return true;
  }

 private:
  std::string& token_;
};

std::string pretty(std::string_view body, std::string& token) {
  if (body.empty()) return "(empty)\n";
  pugi::xml_document document;
  if (!document.load_buffer(body.data(), body.size())) {
    return maskText(std::string(body), token) + '\n';
  }
  Masker masker(token);
  document.traverse(masker);
  std::ostringstream out;
  document.save(out, "  ", pugi::format_indent | pugi::format_no_declaration);
  return out.str();
}

// A user name and password written into the URL stay out of the trace.
std::string maskUrl(std::string_view url) {
  const auto scheme = url.find("://");
  if (scheme == url.npos) return std::string(url);
  const auto hostStart = scheme + 3;
  const auto at = url.find('@', hostStart);
  if (at == url.npos || at > url.find('/', hostStart)) return std::string(url);
  return std::string(url.substr(0, hostStart)) + kMask + std::string(url.substr(at));
}

}  // namespace

TraceHandler makeTraceHandler() {
  auto token = std::make_shared<std::string>();
  return [token](const Exchange& exchange) {
    char elapsed[32];
    std::snprintf(elapsed, sizeof elapsed, "%.1f ms",
                  static_cast<double>(exchange.elapsed.count()) / 1000.0);
    std::cerr << "--> " << exchange.method << ' ' << maskUrl(exchange.url) << " ("
              << exchange.soapAction << ")\n"
              << pretty(exchange.request, *token);
    std::cerr << "<-- ";
    if (exchange.status != 0) std::cerr << "HTTP " << exchange.status << ' ';
    if (!exchange.failure.empty()) std::cerr << "failed: " << exchange.failure << ' ';
    std::cerr << "in " << elapsed << '\n' << pretty(exchange.answer, *token) << std::flush;
  };
}

}  // namespace brenmoor::cli

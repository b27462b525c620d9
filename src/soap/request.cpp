#include "soap/request.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "soap/namespaces.h"
#include "util/datetime.h"
#include "util/text.h"

namespace brenmoor::soap {
namespace {

// Prefixes used in the request text, paired with their namespace URIs.
enum NsIndex { kEnc, kEnv, kXs, kXi, kService, kNsCount };

class EnvelopeWriter {
 public:
  void element(const Element& e) {
    std::visit([&](const auto& v) { write(e.name, v); }, e.value);
  }

  std::string finish(std::string_view namespaceUri, std::string_view operation,
                     bool withoutDeclaration) {
    used_[kEnv] = used_[kService] = true;
    const std::array<std::string_view, kNsCount> uris = {kEncodingNs, kEnvelopeNs, kSchemaNs,
                                                         kSchemaInstanceNs, namespaceUri};
    constexpr std::array<std::string_view, kNsCount> prefixes = {"Enc", "S", "XS", "XI", "a"};
    std::array<int, kNsCount> order = {kEnc, kEnv, kXs, kXi, kService};
    std::sort(order.begin(), order.end(), [&](int l, int r) { return uris[l] < uris[r]; });

    std::string out;
    out.reserve(body_.size() + 400);
    if (!withoutDeclaration) out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    out += "<S:Envelope";
    for (int i : order) {
      if (!used_[i]) continue;
      out += "\r\n\txmlns:";
      out += prefixes[i];
      out += "=\"";
      util::appendEscaped(out, uris[i], false);
      out += '"';
    }
    out += "><S:Body><a:";
    out += operation;
    out += '>';
    out += body_;
    out += "</a:";
    out += operation;
    out += "></S:Body></S:Envelope>";
    return out;
  }

 private:
  void open(std::string_view name, std::string_view type) {
    used_[kXs] = used_[kXi] = true;
    body_ += '<';
    body_ += name;
    body_ += " XI:type=\"XS:";
    body_ += type;
    body_ += "\">";
  }
  void close(std::string_view name) {
    body_ += "</";
    body_ += name;
    body_ += '>';
  }
  void typed(std::string_view name, std::string_view type, std::string_view text) {
    open(name, type);
    util::appendEscaped(body_, text, false);  // the apostrophe stays as it is
    close(name);
  }

  void write(std::string_view name, const std::string& v) { typed(name, "string", v); }
  void write(std::string_view name, int16_t v) { typed(name, "short", std::to_string(v)); }
  void write(std::string_view name, int32_t v) { typed(name, "int", std::to_string(v)); }
  void write(std::string_view name, bool v) { typed(name, "boolean", v ? "true" : "false"); }
  void write(std::string_view name, double v) { typed(name, "double", formatDouble(v)); }
  void write(std::string_view name, const Date& v) {
    typed(name, "dateTime", util::formatDateTime(v));
  }
  void write(std::string_view name, const StringArray& items) {
    used_[kEnc] = used_[kXs] = used_[kXi] = true;
    body_ += '<';
    body_ += name;
    body_ += " XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[";
    body_ += std::to_string(items.size());
    body_ += "]\">";
    for (const auto& item : items) typed("i", "string", item);
    close(name);
  }
  void write(std::string_view name, const Structure& s) {
    body_ += '<';
    body_ += name;
    body_ += '>';
    for (const auto& child : s.children) element(child);
    close(name);
  }

  static std::string formatDouble(double v) {
    if (std::isnan(v)) return "NaN";
    if (std::isinf(v)) return v > 0 ? "INF" : "-INF";
    char buf[32];
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, end);
  }

  std::string body_;
  std::array<bool, kNsCount> used_{};
};

}  // namespace

std::string writeEnvelope(std::string_view namespaceUri, std::string_view operation,
                          const std::vector<Element>& elements, bool withoutDeclaration) {
  EnvelopeWriter writer;
  for (const auto& e : elements) writer.element(e);
  return writer.finish(namespaceUri, operation, withoutDeclaration);
}

}  // namespace brenmoor::soap

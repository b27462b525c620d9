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

using UsedNamespaces = std::array<bool, kNsCount>;

// Only the namespaces a request uses are declared, so they are known before it is written.
void noteNamespaces(const std::vector<Element>& elements, UsedNamespaces& used) {
  for (const auto& e : elements) {
    if (const auto* s = std::get_if<Structure>(&e.value)) {
      noteNamespaces(s->children, used);
      continue;
    }
    used[kXs] = used[kXi] = true;
    if (std::holds_alternative<StringArray>(e.value)) used[kEnc] = true;
  }
}

// Writes the whole request into one buffer.
class EnvelopeWriter {
 public:
  explicit EnvelopeWriter(std::string& out) : out_(out) {}

  void header(std::string_view namespaceUri, std::string_view operation, const UsedNamespaces& used,
              bool withoutDeclaration) {
    const std::array<std::string_view, kNsCount> uris = {kEncodingNs, kEnvelopeNs, kSchemaNs,
                                                         kSchemaInstanceNs, namespaceUri};
    constexpr std::array<std::string_view, kNsCount> prefixes = {"Enc", "S", "XS", "XI", "a"};
    std::array<int, kNsCount> order = {kEnc, kEnv, kXs, kXi, kService};
    std::sort(order.begin(), order.end(), [&](int l, int r) { return uris[l] < uris[r]; });

    if (!withoutDeclaration) out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    out_ += "<S:Envelope";
    for (int i : order) {
      if (!used[i]) continue;
      out_ += "\r\n\txmlns:";
      out_ += prefixes[i];
      out_ += "=\"";
      util::appendEscaped(out_, uris[i], false);
      out_ += '"';
    }
    out_ += "><S:Body><a:";
    out_ += operation;
    out_ += '>';
  }

  void element(const Element& e) {
    std::visit([&](const auto& v) { write(e.name, v); }, e.value);
  }

  void footer(std::string_view operation) {
    out_ += "</a:";
    out_ += operation;
    out_ += "></S:Body></S:Envelope>";
  }

 private:
  void open(std::string_view name, std::string_view type) {
    out_ += '<';
    out_ += name;
    out_ += " XI:type=\"XS:";
    out_ += type;
    out_ += "\">";
  }
  void close(std::string_view name) {
    out_ += "</";
    out_ += name;
    out_ += '>';
  }
  void typed(std::string_view name, std::string_view type, std::string_view text) {
    open(name, type);
    util::appendEscaped(out_, text, false);  // the apostrophe stays as it is
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
    out_ += '<';
    out_ += name;
    out_ += " XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[";
    out_ += std::to_string(items.size());
    out_ += "]\">";
    for (const auto& item : items) typed("i", "string", item);
    close(name);
  }
  void write(std::string_view name, const Structure& s) {
    out_ += '<';
    out_ += name;
    out_ += '>';
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

  std::string& out_;
};

}  // namespace

std::string writeEnvelope(std::string_view namespaceUri, std::string_view operation,
                          const std::vector<Element>& elements, bool withoutDeclaration) {
  UsedNamespaces used{};
  used[kEnv] = used[kService] = true;
  noteNamespaces(elements, used);
  std::string out;
  out.reserve(1024);
  EnvelopeWriter writer(out);
  writer.header(namespaceUri, operation, used, withoutDeclaration);
  for (const auto& e : elements) writer.element(e);
  writer.footer(operation);
  return out;
}

}  // namespace brenmoor::soap

#include "soap/arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "soap/clip.h"
#include "soap/faults.h"
#include "soap/namespaces.h"
#include "soap/xml_names.h"

namespace sandbox {
namespace {

// The types each reader takes, by local name in any schema namespace or in soapenc's, which
// repeats them; integers may arrive narrower or wider than read.
constexpr std::string_view kStringTypes[] = {"string", "normalizedString", "token", "anyURI",
                                             "anySimpleType"};
constexpr std::string_view kIntegerTypes[] = {"int",
                                              "short",
                                              "byte",
                                              "long",
                                              "integer",
                                              "unsignedInt",
                                              "unsignedShort",
                                              "unsignedByte",
                                              "unsignedLong",
                                              "nonNegativeInteger",
                                              "positiveInteger",
                                              "nonPositiveInteger",
                                              "negativeInteger"};
constexpr std::string_view kBooleanTypes[] = {"boolean"};
constexpr std::string_view kRealTypes[] = {
    "double", "float",   "decimal",     "int",           "short",        "byte",
    "long",   "integer", "unsignedInt", "unsignedShort", "unsignedByte", "unsignedLong"};
constexpr std::string_view kDateTimeTypes[] = {"dateTime"};
// Older toolkits still write the 1999 and 2000/10 schema drafts.
constexpr std::string_view kTypeNamespaces[] = {kSchemaNs, kEncodingNs,
                                                "http://www.w3.org/1999/XMLSchema",
                                                "http://www.w3.org/2000/10/XMLSchema"};
// How many href hops one argument may take: ends cycles and chains alike.
constexpr int kMaxReferenceHops = 8;
// The text that references may stand for, in all: a request that refers to one large entry
// over and over would otherwise be read as many times over as it refers to it.
constexpr std::size_t kMaxReferencedBytes = 32 * 1024 * 1024;

std::size_t text_size(pugi::xml_node node) {
  std::size_t size = 0;
  // Iterative, so that deep nesting costs no stack.
  pugi::xml_node child = node.first_child();
  while (child) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      size += std::string_view(child.value()).size();
    }
    if (child.first_child()) {
      child = child.first_child();
      continue;
    }
    while (child != node && !child.next_sibling()) child = child.parent();
    if (child == node) break;
    child = child.next_sibling();
  }
  return size;
}

bool is_type_namespace(std::string_view ns) {
  return std::find(std::begin(kTypeNamespaces), std::end(kTypeNamespaces), ns) !=
         std::end(kTypeNamespaces);
}

bool is_one_of(std::string_view local, std::span<const std::string_view> accepted) {
  return std::find(accepted.begin(), accepted.end(), local) != accepted.end();
}

// A schema or soapenc type named in `accepted`, or the universal type that stands for any.
bool is_accepted_type(const QualifiedName& type, std::span<const std::string_view> accepted) {
  return is_type_namespace(type.ns) &&
         (is_one_of(type.local, accepted) || type.local == "anyType" || type.local == "ur-type");
}

bool is_nil(pugi::xml_node node) {
  const std::string_view nil = find_attribute(node, kSchemaInstanceNs, "nil").value();
  return nil == "true" || nil == "1";
}

// Character data of an element that holds no elements; nothing when it does.
std::optional<std::string> simple_text(pugi::xml_node node) {
  std::string text;
  for (pugi::xml_node child : node.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      text += child.value();
    } else if (child.type() == pugi::node_element) {
      return std::nullopt;
    }
  }
  return text;
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const auto first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

template <class Number>
bool parse_number(std::string_view text, Number& value) {
  if (text.starts_with('+')) text.remove_prefix(1);
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc{} && result.ptr == text.data() + text.size();
}

}  // namespace

Arguments::Arguments(pugi::xml_node operation, std::string_view operation_name)
    : operation_(operation), operation_name_(operation_name) {
  auto references = std::make_shared<References>();
  // multiRef entries are the Body's other entries, but some toolkits give ids to nested
  // elements as well: every element of the document may be a target.
  struct Collect : pugi::xml_tree_walker {
    References& found;
    explicit Collect(References& found) : found(found) {}
    bool for_each(pugi::xml_node& node) override {
      if (node.type() != pugi::node_element) return true;
      if (const pugi::xml_attribute id = node.attribute("id")) {
        found.targets.emplace(id.value(), References::Target{node, std::nullopt});
      }
      return true;
    }
  } collect(*references);
  operation.root().traverse(collect);
  references_ = std::move(references);
}

pugi::xml_node Arguments::resolved(pugi::xml_node node, std::string_view name) const {
  for (int hop = 0; node; ++hop) {
    const std::string_view href = node.attribute("href").value();
    if (href.empty()) return node;
    if (hop == kMaxReferenceHops) fail(name, "has references that go round in a cycle");
    if (!href.starts_with('#')) {
      fail(name, "refers to '" + clip(href) + "', outside the request");
    }
    const auto target = references_->targets.find(href.substr(1));
    if (target == references_->targets.end()) {
      fail(name, "refers to '" + clip(href) + "', which the request does not hold");
    }
    References::Target& found = target->second;
    if (!found.text_size) found.text_size = text_size(found.node);
    references_->bytes_referenced += *found.text_size;
    if (references_->bytes_referenced > kMaxReferencedBytes) {
      fail(name, "refers to more text, in all its references, than the request may (" +
                     std::to_string(kMaxReferencedBytes / (1024 * 1024)) + " MiB)");
    }
    node = found.node;
  }
  return node;
}

pugi::xml_node Arguments::find(std::string_view name) const {
  for (pugi::xml_node child : operation_.children()) {
    if (child.type() == pugi::node_element && local_name(child.name()) == name) {
      return resolved(child, name);
    }
  }
  return {};
}

pugi::xml_node Arguments::present(std::string_view name) const {
  const pugi::xml_node node = find(name);
  if (!node) {
    throw ServerException("Missing argument '" + described(name) + "' of operation '" +
                          std::string(operation_name_) + "'");
  }
  return node;
}

void Arguments::fail(std::string_view name, std::string_view problem) const {
  throw ServerException("Argument '" + described(name) + "' of operation '" +
                        std::string(operation_name_) + "' " + std::string(problem));
}

pugi::xml_node Arguments::typed(std::string_view name, std::span<const std::string_view> accepted,
                                std::string_view described_as) const {
  const pugi::xml_node node = present(name);
  const pugi::xml_attribute type = find_attribute(node, kSchemaInstanceNs, "type");
  if (!type) return node;
  const auto qname = resolve_qname_value(node, type.value());
  if (!qname) fail(name, "has a type with an undeclared prefix: '" + clip(type.value()) + "'");
  if (!is_accepted_type(*qname, accepted)) {
    fail(name, "has type '" + clip(type.value()) + "', expected " + std::string(described_as));
  }
  return node;
}

std::string Arguments::scalar_text(std::string_view name,
                                   std::span<const std::string_view> accepted,
                                   std::string_view described_as) const {
  const pugi::xml_node node = typed(name, accepted, described_as);
  if (is_nil(node)) fail(name, "is nil, expected " + std::string(described_as));
  const auto text = simple_text(node);
  if (!text) fail(name, "must be a simple value, expected " + std::string(described_as));
  return std::string(trim(*text));
}

std::string Arguments::string(std::string_view name) const {
  const pugi::xml_node node = typed(name, kStringTypes, "xsd:string");
  if (is_nil(node)) return {};
  auto text = simple_text(node);
  if (!text) fail(name, "must be a simple value, expected xsd:string");
  return std::move(*text);
}

std::int64_t Arguments::integer(std::string_view name, std::int64_t min, std::int64_t max,
                                std::string_view described_as) const {
  const std::string text = scalar_text(name, kIntegerTypes, described_as);
  std::int64_t value = 0;
  if (!parse_number(text, value)) {
    fail(name, "is not a valid " + std::string(described_as) + ": '" + clip(text) + "'");
  }
  if (value < min || value > max) {
    fail(name, "is out of range for " + std::string(described_as) + ": " + text);
  }
  return value;
}

std::int32_t Arguments::int32(std::string_view name) const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(integer(name, Limits::min(), Limits::max(), "xsd:int"));
}

std::int16_t Arguments::int16(std::string_view name) const {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(integer(name, Limits::min(), Limits::max(), "xsd:short"));
}

bool Arguments::boolean(std::string_view name) const {
  const std::string text = scalar_text(name, kBooleanTypes, "xsd:boolean");
  if (text == "true" || text == "1") return true;
  if (text == "false" || text == "0") return false;
  fail(name, "is not a valid xsd:boolean: '" + clip(text) + "'");
}

double Arguments::real(std::string_view name) const {
  const std::string text = scalar_text(name, kRealTypes, "xsd:double");
  if (text == "INF") return std::numeric_limits<double>::infinity();
  if (text == "-INF") return -std::numeric_limits<double>::infinity();
  if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
  double value = 0;
  if (!parse_number(text, value)) fail(name, "is not a valid xsd:double: '" + clip(text) + "'");
  return value;
}

Timestamp Arguments::date_time(std::string_view name) const {
  const std::string text = scalar_text(name, kDateTimeTypes, "xsd:dateTime");
  const auto time = parse_date_time(text);
  if (!time) fail(name, "is not a valid xsd:dateTime: '" + clip(text) + "'");
  return *time;
}

std::vector<std::string> Arguments::strings(std::string_view name) const {
  const pugi::xml_node node = present(name);
  if (is_nil(node)) return {};
  if (const pugi::xml_attribute type = find_attribute(node, kSchemaInstanceNs, "type")) {
    // soapenc:Array, or the named array type a WSDL-driven toolkit copies from ours.
    const auto qname = resolve_qname_value(node, type.value());
    if (!qname || !((qname->ns == kEncodingNs && qname->local == "Array") ||
                    qname->local == kStringArrayType)) {
      fail(name, "has type '" + clip(type.value()) + "', expected a string array");
    }
  }

  std::vector<std::string> items;
  for (pugi::xml_node reference : node.children()) {
    if (reference.type() != pugi::node_element) continue;
    const pugi::xml_node item = resolved(reference, name);
    if (const pugi::xml_attribute type = find_attribute(item, kSchemaInstanceNs, "type")) {
      const auto qname = resolve_qname_value(item, type.value());
      if (!qname || !is_accepted_type(*qname, kStringTypes)) {
        fail(name, "holds an item of type '" + clip(type.value()) + "', expected xsd:string");
      }
    }
    auto text = is_nil(item) ? std::optional<std::string>("") : simple_text(item);
    if (!text) fail(name, "holds an item that is not a simple value");
    items.push_back(std::move(*text));
  }

  if (const pugi::xml_attribute array_type = find_attribute(node, kEncodingNs, "arrayType")) {
    const std::string_view declared = array_type.value();
    const auto bracket = declared.find('[');
    const auto item_type =
        resolve_qname_value(node, declared.substr(0, std::min(bracket, declared.size())));
    std::size_t count = 0;
    const bool count_ok =
        bracket != std::string_view::npos && declared.ends_with(']') &&
        parse_number(declared.substr(bracket + 1, declared.size() - bracket - 2), count);
    if (!item_type || !is_accepted_type(*item_type, kStringTypes) || !count_ok) {
      fail(name, "has array type '" + clip(declared) + "', expected xsd:string[N]");
    }
    if (count != items.size()) {
      fail(name, "declares " + std::to_string(count) + " items but holds " +
                     std::to_string(items.size()));
    }
  }
  return items;
}

pugi::xml_node Arguments::structure_node(std::string_view name) const {
  const pugi::xml_node node = present(name);
  if (const auto text = simple_text(node); text && !trim(*text).empty()) {
    fail(name, "must be a structure, not text");
  }
  return node;
}

Arguments Arguments::structure(std::string_view name) const {
  const pugi::xml_node node = structure_node(name);
  if (is_nil(node)) fail(name, "is nil, expected a structure");
  return Arguments(node, *this, described(name) + ".");
}

std::optional<Arguments> Arguments::optional_structure(std::string_view name) const {
  const pugi::xml_node node = structure_node(name);
  if (is_nil(node)) return std::nullopt;
  return Arguments(node, *this, described(name) + ".");
}

std::vector<Arguments> Arguments::structures(std::string_view name) const {
  const pugi::xml_node node = structure_node(name);
  std::vector<Arguments> items;
  if (is_nil(node)) return items;
  for (pugi::xml_node item : node.children()) {
    if (item.type() != pugi::node_element) continue;
    items.push_back(Arguments(resolved(item, name), *this,
                              described(name) + "[" + std::to_string(items.size()) + "]."));
  }
  return items;
}

bool Arguments::holds_elements(std::string_view name) const {
  const pugi::xml_node node = find(name);
  return node && !simple_text(node);
}

std::optional<std::string> Arguments::leading(std::string_view name) const {
  for (pugi::xml_node child : operation_.children()) {
    if (child.type() != pugi::node_element) continue;
    if (local_name(child.name()) != name) return std::nullopt;
    return simple_text(resolved(child, name));
  }
  return std::nullopt;
}

}  // namespace sandbox

#include "soap/answer.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

#include "soap/failure.h"
#include "soap/namespaces.h"

namespace brenmoor::soap {
namespace {

// Deeper answers are hostile, not real: no service record nests anywhere near this.
constexpr int kMaxDepth = 128;
// Nor does a real answer hold a million elements; each costs memory in every stage.
constexpr size_t kMaxElements = 1'000'000;
constexpr size_t kMaxTextContent = 16u << 20;

std::string_view localName(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? qname : qname.substr(colon + 1);
}

std::string_view prefixOf(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? std::string_view{} : qname.substr(0, colon);
}

pugi::xml_node firstElementChild(pugi::xml_node n) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    if (c.type() == pugi::node_element) return c;
  }
  return {};
}

pugi::xml_node nextElementSibling(pugi::xml_node n) {
  for (auto s = n.next_sibling(); s; s = s.next_sibling()) {
    if (s.type() == pugi::node_element) return s;
  }
  return {};
}

// What the answer's elements mean once their prefixes are resolved.
struct ElementFacts {
  std::string_view ns;
  std::string_view typeLocal;
  std::string_view typeNs;
  std::string_view valueNs;  // of a qualified-name text
  bool nil = false;
  bool referenceOnly = false;  // soapenc:root="0": reached through references only
};

// One pass over the document, in document order, keeping the namespace bindings in scope on
// a stack: every prefix resolves in constant time, however deep or wide the answer is.
class DocumentIndex {
 public:
  DocumentIndex(const pugi::xml_document& doc, std::string_view source) {
    std::vector<std::vector<std::string_view>> declaredAt;
    auto leave = [&] {
      for (auto prefix : declaredAt.back()) bindings_[prefix].pop_back();
      declaredAt.pop_back();
    };
    for (auto n = doc.document_element(); n;) {
      if (facts_.size() == kMaxElements) {
        throw Failure(kUnusableServer, "The answer from " + std::string(source) +
                                           " holds more than " + std::to_string(kMaxElements) +
                                           " elements");
      }
      declaredAt.emplace_back();
      enter(n, declaredAt.back());
      if (auto child = firstElementChild(n)) {
        n = child;
        continue;
      }
      for (;;) {
        leave();
        if (auto sibling = nextElementSibling(n)) {
          n = sibling;
          break;
        }
        n = n.parent();
        if (n.type() != pugi::node_element) {
          n = {};
          break;
        }
      }
    }
  }

  const ElementFacts& facts(pugi::xml_node e) const { return facts_.at(e.internal_object()); }

  pugi::xml_node byId(std::string_view id) const {
    auto found = ids_.find(id);
    return found == ids_.end() ? pugi::xml_node() : found->second;
  }

 private:
  std::string_view resolve(std::string_view prefix) const {
    auto found = bindings_.find(prefix);
    return found == bindings_.end() || found->second.empty() ? std::string_view{}
                                                             : found->second.back();
  }

  void enter(pugi::xml_node e, std::vector<std::string_view>& declared) {
    for (auto a : e.attributes()) {
      std::string_view name = a.name();
      if (name == "xmlns" || name.starts_with("xmlns:")) {
        auto prefix = name == "xmlns" ? std::string_view{} : name.substr(6);
        bindings_[prefix].push_back(a.value());
        declared.push_back(prefix);
      }
    }
    ElementFacts f;
    std::string_view name = e.name();
    f.ns = resolve(prefixOf(name));
    for (auto a : e.attributes()) {
      std::string_view attr = a.name();
      std::string_view value = a.value();
      auto prefix = prefixOf(attr);
      if (prefix.empty() || prefix == "xmlns") {
        if (attr == "id") ids_.emplace(value, e);
        continue;
      }
      auto local = localName(attr);
      auto ns = resolve(prefix);
      if (ns == kSchemaInstanceNs && local == "nil") {
        f.nil = value == "true" || value == "1";
      } else if (ns == kSchemaInstanceNs && local == "type") {
        f.typeLocal = localName(value);
        f.typeNs = resolve(prefixOf(value));
      } else if (ns == kEncodingNs && local == "root") {
        f.referenceOnly = value == "0" || value == "false";
      }
    }
    // Qualified-name values (fault codes) need their prefix resolved where they stand.
    std::string_view text = e.child_value();
    auto textPrefix = prefixOf(text);
    if (!textPrefix.empty() && text.find_first_of(" /") == std::string_view::npos) {
      f.valueNs = resolve(textPrefix);
    }
    facts_.emplace(e.internal_object(), f);
  }

  std::unordered_map<const void*, ElementFacts> facts_;
  std::unordered_map<std::string_view, pugi::xml_node> ids_;
  std::unordered_map<std::string_view, std::vector<std::string_view>> bindings_;
};

pugi::xml_encoding encodingFor(std::string_view charset, std::string_view source) {
  std::string c(charset);
  std::transform(c.begin(), c.end(), c.begin(), [](unsigned char ch) { return std::tolower(ch); });
  if (c.empty() || c == "utf-16" || c == "utf-32") return pugi::encoding_auto;  // BOM decides
  if (c == "utf-8" || c == "utf8") return pugi::encoding_utf8;
  if (c == "utf-16le") return pugi::encoding_utf16_le;
  if (c == "utf-16be") return pugi::encoding_utf16_be;
  if (c == "utf-32le") return pugi::encoding_utf32_le;
  if (c == "utf-32be") return pugi::encoding_utf32_be;
  if (c == "iso-8859-1" || c == "latin1" || c == "us-ascii" || c == "ascii") {
    return pugi::encoding_latin1;
  }
  throw Failure(kUnusableServer,
                "The answer from " + std::string(source) + " uses the unknown charset " + c);
}

// Turns the Body's elements into nodes, following href references. Each multiRef is built once
// and its value shared by every reference to it.
class TreeBuilder {
 public:
  TreeBuilder(const DocumentIndex& index, std::string_view source)
      : index_(index), source_(source) {}

  std::shared_ptr<const Node> build(pugi::xml_node element, int depth) {
    if (depth > kMaxDepth) fail("nests deeper than " + std::to_string(kMaxDepth) + " levels");
    auto node = std::make_shared<Node>();
    node->name = localName(element.name());
    node->ns = index_.facts(element).ns;
    std::string_view href = element.attribute("href").value();
    node->value = href.empty() ? valueOf(element, depth) : resolve(href, depth);
    return node;
  }

 private:
  [[noreturn]] void fail(const std::string& what) {
    throw Failure(kUnusableServer, "The answer from " + source_ + " " + what);
  }

  std::shared_ptr<const NodeValue> valueOf(pugi::xml_node element, int depth) {
    const ElementFacts& f = index_.facts(element);
    auto value = std::make_shared<NodeValue>();
    value->nil = f.nil;
    value->type = f.typeLocal;
    value->typeNamespace = f.typeNs;
    value->valueNamespace = f.valueNs;
    for (auto c : element.children()) {
      if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) {
        value->text += c.value();
      } else if (c.type() == pugi::node_element) {
        value->children.push_back(build(c, depth + 1));
      }
    }
    if (!value->children.empty()) value->valueNamespace.clear();
    return value;
  }

  std::shared_ptr<const NodeValue> resolve(std::string_view href, int depth) {
    if (href.front() != '#') fail("refers to the external resource " + std::string(href));
    std::string id(href.substr(1));
    if (auto done = built_.find(id); done != built_.end()) return done->second;
    auto target = index_.byId(id);
    if (!target) fail("refers to the missing element #" + id);
    if (!inProgress_.insert(id).second) fail("holds a reference cycle through #" + id);
    auto value = valueOf(target, depth);
    inProgress_.erase(id);
    built_.emplace(id, value);
    return value;
  }

  const DocumentIndex& index_;
  std::string source_;
  std::map<std::string, std::shared_ptr<const NodeValue>, std::less<>> built_;
  std::set<std::string, std::less<>> inProgress_;
};

pugi::xml_node childNs(const DocumentIndex& index, pugi::xml_node parent, std::string_view ns,
                       std::string_view local) {
  for (auto c = firstElementChild(parent); c; c = nextElementSibling(c)) {
    if (localName(c.name()) == local && index.facts(c).ns == ns) return c;
  }
  return {};
}

std::string serverFaultText(const DocumentIndex& index, pugi::xml_node fault) {
  auto code = fault.child("faultcode");
  std::string text;
  if (code && index.facts(code).valueNs != kEnvelopeNs) {
    text = "{" + std::string(index.facts(code).valueNs) + "}";
  }
  text += localName(code.child_value());
  text += " : ";
  text += fault.child("faultstring").child_value();
  return text;
}

// Spells out the text of a subtree. Shared values make a tree small in memory but possibly
// exponential when walked, so both the text and the walk are bounded.
void appendTextContent(const Node& node, std::string& out, size_t& visitsLeft) {
  if (visitsLeft-- == 0 || out.size() + node.text().size() > kMaxTextContent) {
    throw Failure(kGeneralFailure,
                  "The text of answer element <" + node.name + "> is too large to spell out");
  }
  out += node.text();
  for (const auto& c : node.children()) appendTextContent(*c, out, visitsLeft);
}

}  // namespace

const Node* Node::child(std::string_view childName) const {
  for (const auto& c : children()) {
    if (c->name == childName && c->ns.empty()) return c.get();
  }
  return nullptr;
}

std::string Node::textContent() const {
  std::string all;
  size_t visitsLeft = kMaxElements;
  appendTextContent(*this, all, visitsLeft);
  return all;
}

std::string_view Node::valueLocalName() const {
  return localName(text());
}

bool Node::isDateTime() const {
  return value->type == "dateTime" && value->typeNamespace == kSchemaNs;
}

Answer Answer::parse(std::string_view body, std::string_view charset, std::string_view source) {
  Answer answer;
  answer.source_ = source;
  auto fail = [&](const std::string& what) {
    throw Failure(kUnusableServer, "The answer from " + std::string(source) + " " + what);
  };
  if (body.empty()) fail("is empty");

  pugi::xml_document doc;
  auto parsed =
      doc.load_buffer(body.data(), body.size(), pugi::parse_default, encodingFor(charset, source));
  if (!parsed) {
    fail("is not well-formed XML: " + std::string(parsed.description()) + " at byte " +
         std::to_string(parsed.offset));
  }
  const DocumentIndex index(doc, source);
  auto envelope = doc.document_element();
  if (localName(envelope.name()) != "Envelope" || index.facts(envelope).ns != kEnvelopeNs) {
    fail("is not a SOAP envelope (its root element is <" + std::string(envelope.name()) + ">)");
  }
  auto soapBody = childNs(index, envelope, kEnvelopeNs, "Body");
  if (!soapBody) fail("has no SOAP Body");

  auto first = firstElementChild(soapBody);
  if (first && localName(first.name()) == "Fault" && index.facts(first).ns == kEnvelopeNs) {
    throw Failure(kServerFault, serverFaultText(index, first));
  }

  TreeBuilder builder(index, source);
  for (auto entry = first; entry; entry = nextElementSibling(entry)) {
    if (index.facts(entry).referenceOnly) continue;
    answer.parameters_.push_back(builder.build(entry, 0));
  }
  return answer;
}

const Node& Answer::firstParameter() const {
  if (parameters_.empty()) {
    throw Failure(kGeneralFailure, "The answer from " + source_ + " has an empty SOAP Body");
  }
  return *parameters_.front();
}

bool Answer::isFault() const {
  return !parameters_.empty() && parameters_.front()->name == "Fault";
}

const Node& Answer::returnNode() const {
  const Node& wrapper = firstParameter();
  if (wrapper.children().empty()) {
    throw Failure(kGeneralFailure,
                  "The answer from " + source_ + " has no return value in <" + wrapper.name + ">");
  }
  return *wrapper.children().front();
}

}  // namespace brenmoor::soap

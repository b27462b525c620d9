#include "soap/answer.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "soap/failure.h"
#include "soap/namespaces.h"

namespace brenmoor::soap {
namespace {

// Deeper answers are hostile, not real: no service record nests anywhere near this.
constexpr int kMaxDepth = 128;

std::string_view localName(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? qname : qname.substr(colon + 1);
}

std::string_view prefixOf(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? std::string_view{} : qname.substr(0, colon);
}

// The URI bound to `prefix` where `at` stands (the default namespace for an empty prefix).
std::string_view resolvePrefix(pugi::xml_node at, std::string_view prefix) {
  std::string attr = prefix.empty() ? "xmlns" : "xmlns:" + std::string(prefix);
  for (auto n = at; n; n = n.parent()) {
    if (auto a = n.attribute(attr.c_str())) return a.value();
  }
  return {};
}

std::string_view namespaceOf(pugi::xml_node element) {
  return resolvePrefix(element, prefixOf(element.name()));
}

// An attribute by namespace URI and local name, whatever prefix the server chose.
pugi::xml_attribute attributeNs(pugi::xml_node element, std::string_view ns,
                                std::string_view local) {
  for (auto a : element.attributes()) {
    std::string_view name = a.name();
    if (localName(name) != local) continue;
    auto prefix = prefixOf(name);
    if (!prefix.empty() && resolvePrefix(element, prefix) == ns) return a;
  }
  return {};
}

bool isNil(pugi::xml_node element) {
  std::string_view v = attributeNs(element, kSchemaInstanceNs, "nil").value();
  return v == "true" || v == "1";
}

bool isOnlyReachableByReference(pugi::xml_node entry) {
  std::string_view v = attributeNs(entry, kEncodingNs, "root").value();
  return v == "0" || v == "false";
}

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
// and shared by every reference to it.
class TreeBuilder {
 public:
  TreeBuilder(pugi::xml_node body, std::string_view source) : source_(source) {
    for (auto n : body.select_nodes(".//*[@id]")) {
      ids_.emplace(n.node().attribute("id").value(), n.node());
    }
  }

  std::shared_ptr<const Node> build(pugi::xml_node element, int depth) {
    if (depth > kMaxDepth) fail("nests deeper than " + std::to_string(kMaxDepth) + " levels");
    auto node = std::make_shared<Node>();
    node->name = localName(element.name());
    node->ns = namespaceOf(element);
    node->nil = isNil(element);

    std::string_view href = element.attribute("href").value();
    if (!href.empty()) {
      auto target = resolve(href, depth);
      node->text = target->text;
      node->valueNamespace = target->valueNamespace;
      node->nil = node->nil || target->nil;
      node->children = target->children;
      return node;
    }
    fill(*node, element, depth);
    return node;
  }

 private:
  [[noreturn]] void fail(const std::string& what) {
    throw Failure(kUnusableServer, "The answer from " + source_ + " " + what);
  }

  void fill(Node& node, pugi::xml_node element, int depth) {
    for (auto c : element.children()) {
      if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) {
        node.text += c.value();
      } else if (c.type() == pugi::node_element) {
        node.children.push_back(build(c, depth + 1));
      }
    }
    // Qualified-name values (fault codes) need their prefix resolved where they stand.
    if (node.children.empty()) {
      auto prefix = prefixOf(node.text);
      if (!prefix.empty() && node.text.find_first_of(" /") == std::string::npos) {
        node.valueNamespace = resolvePrefix(element, prefix);
      }
    }
  }

  std::shared_ptr<const Node> resolve(std::string_view href, int depth) {
    if (href.front() != '#') fail("refers to the external resource " + std::string(href));
    std::string id(href.substr(1));
    if (auto done = built_.find(id); done != built_.end()) return done->second;
    auto target = ids_.find(id);
    if (target == ids_.end()) fail("refers to the missing element #" + id);
    if (!inProgress_.insert(id).second) fail("holds a reference cycle through #" + id);
    auto node = std::make_shared<Node>();
    node->name = localName(target->second.name());
    node->ns = namespaceOf(target->second);
    node->nil = isNil(target->second);
    fill(*node, target->second, depth + 1);
    inProgress_.erase(id);
    built_.emplace(id, node);
    return node;
  }

  std::string source_;
  std::map<std::string, pugi::xml_node, std::less<>> ids_;
  std::map<std::string, std::shared_ptr<const Node>, std::less<>> built_;
  std::set<std::string, std::less<>> inProgress_;
};

pugi::xml_node childNs(pugi::xml_node parent, std::string_view ns, std::string_view local) {
  for (auto c : parent.children()) {
    if (c.type() == pugi::node_element && localName(c.name()) == local && namespaceOf(c) == ns) {
      return c;
    }
  }
  return {};
}

std::string serverFaultText(pugi::xml_node fault) {
  auto code = fault.child("faultcode");
  std::string_view codeText = code.text().get();
  std::string_view codeNs = resolvePrefix(code, prefixOf(codeText));
  std::string text;
  if (codeNs != kEnvelopeNs) text = "{" + std::string(codeNs) + "}";
  text += localName(codeText);
  text += " : ";
  text += fault.child("faultstring").text().get();
  return text;
}

}  // namespace

const Node* Node::child(std::string_view childName) const {
  for (const auto& c : children) {
    if (c->name == childName && c->ns.empty()) return c.get();
  }
  return nullptr;
}

std::string Node::textContent() const {
  // Referenced subtrees may be shared, but never cyclic: the builder refuses cycles.
  std::string all = text;
  for (const auto& c : children) all += c->textContent();
  return all;
}

std::string_view Node::valueLocalName() const {
  return localName(text);
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
  auto envelope = doc.document_element();
  if (localName(envelope.name()) != "Envelope" || namespaceOf(envelope) != kEnvelopeNs) {
    fail("is not a SOAP envelope (its root element is <" + std::string(envelope.name()) + ">)");
  }
  auto body_ = childNs(envelope, kEnvelopeNs, "Body");
  if (!body_) fail("has no SOAP Body");

  auto first = body_.find_child([](pugi::xml_node n) { return n.type() == pugi::node_element; });
  if (first && localName(first.name()) == "Fault" && namespaceOf(first) == kEnvelopeNs) {
    throw Failure(kServerFault, serverFaultText(first));
  }

  TreeBuilder builder(body_, source);
  for (auto entry : body_.children()) {
    if (entry.type() != pugi::node_element || isOnlyReachableByReference(entry)) continue;
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
  if (wrapper.children.empty()) {
    throw Failure(kGeneralFailure,
                  "The answer from " + source_ + " has no return value in <" + wrapper.name + ">");
  }
  return *wrapper.children.front();
}

}  // namespace brenmoor::soap

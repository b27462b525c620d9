#pragma once
// The answer tree: a parsed rpc/encoded SOAP answer with its multiRef references resolved, so
// that readers see plain nested nodes. A multiRef is read once; every reference to it shares
// its value, so answers that refer to one element many times stay small.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brenmoor::soap {

struct Node;

// What an element holds; shared by a multiRef and every element that refers to it.
struct NodeValue {
  std::string text;            // the element's own character data
  std::string valueNamespace;  // for a qualified-name value (a fault code): its prefix's URI
  std::string type;            // local name of the xsi:type, empty when untyped
  std::string typeNamespace;   // namespace URI of the xsi:type
  bool nil = false;            // xsi:nil="true" or "1"
  std::vector<std::shared_ptr<const Node>> children;  // element children in document order
};

struct Node {
  std::string name;  // local name
  std::string ns;    // namespace URI, empty for unqualified elements
  std::shared_ptr<const NodeValue> value;

  const std::string& text() const { return value->text; }
  bool nil() const { return value->nil; }
  const std::vector<std::shared_ptr<const Node>>& children() const { return value->children; }
  // The first child with this local name and no namespace, or null.
  const Node* child(std::string_view childName) const;
  // The text of the node and all its descendants, in document order. Throws Failure beyond
  // 16 MiB of text or a million nodes walked, which only a hostile answer reaches (by referring
  // to the same elements many times).
  std::string textContent() const;
  // The local part of a qualified-name value ("ns1:Duplicate" gives "Duplicate"), and the URI
  // its prefix stands for.
  std::string_view valueLocalName() const;
  const std::string& valueNamespace() const { return value->valueNamespace; }
  // Whether the node is typed xsd:dateTime.
  bool isDateTime() const;
};

class Answer {
 public:
  // Parses an answer body. `charset` comes from the Content-Type (empty: the document says, or
  // UTF-8); `source` names the server in error texts. Throws Failure: kUnusableServer for text
  // that is not a SOAP envelope, kServerFault for a SOAP Fault in the envelope namespace.
  static Answer parse(std::string_view body, std::string_view charset, std::string_view source);

  // The Body's entries, without the multiRef entries that are reachable only by reference.
  const std::vector<std::shared_ptr<const Node>>& parameters() const { return parameters_; }

  // Throws Failure when the Body is empty.
  const Node& firstParameter() const;
  // An application fault: the first entry is named "Fault" (in a namespace of the service's).
  bool isFault() const;
  // The first child of the first parameter: the operation's return element. Throws Failure
  // when missing.
  const Node& returnNode() const;

 private:
  std::vector<std::shared_ptr<const Node>> parameters_;
  std::string source_;
};

}  // namespace brenmoor::soap

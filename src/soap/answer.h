#pragma once
// The answer tree: a parsed rpc/encoded SOAP answer with its multiRef references resolved, so
// that readers see plain nested nodes.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brenmoor::soap {

struct Node {
  std::string name;            // local name
  std::string ns;              // namespace URI, empty for unqualified elements
  std::string text;            // the element's own character data
  std::string valueNamespace;  // for a qualified-name value (a fault code): its prefix's URI
  bool nil = false;            // xsi:nil="true" or "1"
  // Element children in document order. A referenced multiRef is shared, never copied.
  std::vector<std::shared_ptr<const Node>> children;

  // The first child with this local name and no namespace, or null.
  const Node* child(std::string_view childName) const;
  // The text of the node and all its descendants, in document order.
  std::string textContent() const;
  // The local part of a qualified-name value ("ns1:Duplicate" gives "Duplicate").
  std::string_view valueLocalName() const;
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

#pragma once
// The answer of one call: a parsed rpc/encoded SOAP answer with its multiRef references
// resolved, held compactly. Elements live in one flat array in document order (a subtree is a
// contiguous run), names are interned and texts sit in one arena, so an answer costs a small,
// fixed amount per element and nothing per reference: every reference to a multiRef shares it.
//
// Answers are built while the body arrives (AnswerParser) and read through Node, a small view.

#include <cstdint>
#include <deque>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace brenmoor::soap {

// How much of an answer the library takes on. Past either bound the call fails with a text that
// names the bound and the size reached.
struct AnswerLimits {
  static constexpr uint64_t kDefaultMaxBytes = uint64_t{1} << 30;
  uint64_t maxBytes = kDefaultMaxBytes;  // of the body as it arrives
  // An element costs about 24 bytes here, however small it is on the wire.
  uint64_t maxElements() const { return maxBytes / 16 + 4096; }
};

class Answer;

class Node {
 public:
  class Children;

  Node() = default;
  explicit operator bool() const { return answer_ != nullptr; }

  std::string_view name() const;  // local name
  std::string_view ns() const;    // namespace URI, empty for unqualified elements
  // The element's own character data (of the multiRef, for a reference).
  std::string_view text() const;
  bool nil() const;         // xsi:nil="true" or "1"
  bool isDateTime() const;  // typed xsd:dateTime
  // The first child with this local name and no namespace, or a null node.
  Node child(std::string_view childName) const;
  Children children() const;
  // The text of the node and all its descendants, in document order. Throws Failure beyond
  // 16 MiB of text or a million nodes walked, which only a hostile answer reaches (by referring
  // to the same elements many times).
  std::string textContent() const;
  // The local part of a qualified-name value ("ns1:Duplicate" gives "Duplicate"), and the URI
  // its prefix stands for.
  std::string_view valueLocalName() const;
  std::string_view valueNamespace() const;
  // Whether two nodes share one value (a multiRef both refer to), and that value's identity.
  bool sharesValueWith(const Node& other) const;
  uint32_t valueId() const { return value(); }
  const Answer& answer() const { return *answer_; }

 private:
  friend class Answer;
  friend class AnswerBuilder;
  Node(const Answer* answer, uint32_t element) : answer_(answer), element_(element) {}
  uint32_t value() const;

  const Answer* answer_ = nullptr;
  uint32_t element_ = 0;
};

class Node::Children {
 public:
  class iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Node;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Node;

    iterator() = default;
    Node operator*() const { return Node(answer_, at_); }
    iterator& operator++();
    iterator operator++(int) {
      auto before = *this;
      ++*this;
      return before;
    }
    bool operator==(const iterator& other) const { return at_ == other.at_; }

   private:
    friend class Children;
    iterator(const Answer* answer, uint32_t at) : answer_(answer), at_(at) {}
    const Answer* answer_ = nullptr;
    uint32_t at_ = 0;
  };

  iterator begin() const { return {answer_, first_}; }
  iterator end() const { return {answer_, end_}; }
  bool empty() const { return first_ == end_; }
  size_t size() const;  // counts: linear
  Node front() const { return *begin(); }

 private:
  friend class Node;
  Children(const Answer* answer, uint32_t first, uint32_t end)
      : answer_(answer), first_(first), end_(end) {}
  const Answer* answer_;
  uint32_t first_;
  uint32_t end_;
};

class Answer {
 public:
  // Parses a whole body at once. `charset` comes from the Content-Type (empty: the document
  // says, or UTF-8); `source` names the server in error texts. Throws Failure: kUnusableAnswer
  // for text that is not a SOAP envelope, kServerFault for a SOAP Fault in the envelope
  // namespace, kGeneralFailure past a limit.
  static Answer parse(std::string_view body, std::string_view charset, std::string_view source,
                      const AnswerLimits& limits = {});

  Answer(Answer&&) noexcept = default;
  Answer& operator=(Answer&&) noexcept = default;

  // The Body's entries, without the multiRef entries that are reachable only by reference.
  size_t parameterCount() const { return parameters_.size(); }
  Node parameter(size_t i) const { return Node(this, parameters_.at(i)); }
  // Throws Failure when the Body is empty.
  Node firstParameter() const;
  // Whether the answer is an application fault (below).
  bool isFault() const { return static_cast<bool>(fault()); }
  // The application fault the answer carries: a Body entry named "Fault", or a "Fault" that is
  // the first child of the response wrapper (as servers built on parameter-reading toolkits
  // write it). A null node when there is none.
  Node fault() const;
  // The first child of the first parameter: the operation's return element. Throws Failure
  // when missing.
  Node returnNode() const;

  // What readers make of an answer is bounded in proportion to its size: each reader spends
  // from one allowance, and a hostile answer whose items all share one large value fails here
  // instead of growing without bound. Throws Failure (kGeneralFailure) once it is spent.
  void spend(uint64_t units) const;
  const std::string& source() const { return source_; }

 private:
  friend class Node;
  friend class AnswerBuilder;
  friend class NameTable;
  Answer() = default;

  struct Element {
    uint32_t name = 0;  // interned qualified name
    uint32_t end = 0;   // one past the last element of its subtree
    // Its character data in the arena; for a reference, `text` is the element referred to.
    uint32_t text = 0;
    uint32_t textSize = 0;
    uint32_t type : 28;          // interned qualified name of its xsi:type, 0 for none
    uint32_t nil : 1;            // xsi:nil
    uint32_t referenceOnly : 1;  // soapenc:root="0": reached through references only
    uint32_t isReference : 1;    // its value is another element's
  };
  uint32_t valueOf(uint32_t i) const {
    const Element& e = elements_[i];
    return e.isReference ? e.text : i;
  }
  struct QualifiedName {
    std::string_view local;
    std::string_view ns;
  };

  const Element& at(uint32_t i) const { return elements_[i]; }
  std::string_view textOf(const Element& e) const { return {arena_.data() + e.text, e.textSize}; }

  std::vector<Element> elements_;
  std::string arena_;
  std::vector<QualifiedName> names_;  // index 0: the empty name
  std::deque<std::string> strings_;   // what the views of names_ and valueNamespaces_ point into
  std::vector<std::pair<uint32_t, std::string_view>> valueNamespaces_;  // by element, sorted
  std::vector<uint32_t> parameters_;
  std::string source_;
  uint64_t allowance_ = 0;
  mutable uint64_t spent_ = 0;
};

}  // namespace brenmoor::soap

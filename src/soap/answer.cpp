#include "soap/answer.h"

#include <algorithm>

#include "soap/failure.h"
#include "soap/namespaces.h"

namespace brenmoor::soap {
namespace {

constexpr size_t kMaxTextContent = 16u << 20;
constexpr size_t kMaxTextContentVisits = 1'000'000;

std::string_view localPart(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? qname : qname.substr(colon + 1);
}

// Spells out the text of a subtree, depth first. Shared values make an answer small in memory
// but possibly exponential when walked, so both the text and the walk are bounded.
std::string spellOut(const Node& top) {
  std::string out;
  size_t visitsLeft = kMaxTextContentVisits;
  std::vector<Node> pending{top};
  while (!pending.empty()) {
    const Node node = pending.back();
    pending.pop_back();
    if (visitsLeft-- == 0 || out.size() + node.text().size() > kMaxTextContent) {
      throw Failure(kGeneralFailure, "The text of answer element <" + std::string(top.name()) +
                                         "> is too large to spell out");
    }
    out += node.text();
    const size_t from = pending.size();
    for (Node c : node.children()) pending.push_back(c);
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(from), pending.end());
  }
  return out;
}

}  // namespace

uint32_t Node::value() const {
  return answer_->valueOf(element_);
}

std::string_view Node::name() const {
  return answer_->names_[answer_->at(element_).name].local;
}

std::string_view Node::ns() const {
  return answer_->names_[answer_->at(element_).name].ns;
}

std::string_view Node::text() const {
  return answer_->textOf(answer_->at(value()));
}

bool Node::nil() const {
  return answer_->at(value()).nil;
}

bool Node::isDateTime() const {
  const auto& type = answer_->names_[answer_->at(value()).type];
  return type.local == "dateTime" && type.ns == kSchemaNs;
}

Node::Children Node::children() const {
  const uint32_t v = value();
  return Children(answer_, v + 1, answer_->at(v).end);
}

Node Node::child(std::string_view childName) const {
  for (Node c : children()) {
    const auto& name = answer_->names_[answer_->at(c.element_).name];
    if (name.local == childName && name.ns.empty()) return c;
  }
  return {};
}

std::string Node::textContent() const {
  return spellOut(*this);
}

std::string_view Node::valueLocalName() const {
  return localPart(text());
}

std::string_view Node::valueNamespace() const {
  const auto& table = answer_->valueNamespaces_;
  const uint32_t v = value();
  auto found = std::lower_bound(table.begin(), table.end(), v,
                                [](const auto& entry, uint32_t e) { return entry.first < e; });
  return found != table.end() && found->first == v ? found->second : std::string_view{};
}

bool Node::sharesValueWith(const Node& other) const {
  return answer_ == other.answer_ && value() == other.value();
}

Node::Children::iterator& Node::Children::iterator::operator++() {
  at_ = answer_->at(at_).end;
  return *this;
}

size_t Node::Children::size() const {
  return static_cast<size_t>(std::distance(begin(), end()));
}

Node Answer::firstParameter() const {
  if (parameters_.empty()) {
    throw Failure(kGeneralFailure, "The answer from " + source_ + " has an empty SOAP Body");
  }
  return Node(this, parameters_.front());
}

Node Answer::fault() const {
  if (parameters_.empty()) return {};
  const Node entry(this, parameters_.front());
  if (entry.name() == "Fault") return entry;
  auto children = entry.children();
  if (!children.empty() && children.front().name() == "Fault") return children.front();
  return {};
}

Node Answer::returnNode() const {
  const Node wrapper = firstParameter();
  auto children = wrapper.children();
  if (children.empty()) {
    throw Failure(kGeneralFailure, "The answer from " + source_ + " has no return value in <" +
                                       std::string(wrapper.name()) + ">");
  }
  return children.front();
}

void Answer::spend(uint64_t units) const {
  spent_ += units;
  if (spent_ > allowance_) {
    throw Failure(kGeneralFailure, "The answer from " + source_ +
                                       " refers to the same values so often that " +
                                       "reading it would take more than " +
                                       std::to_string(allowance_ >> 20) + " MiB; it was refused");
  }
}

}  // namespace brenmoor::soap

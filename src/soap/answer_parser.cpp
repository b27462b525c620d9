#include "soap/answer_parser.h"

#include <expat.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <exception>
#include <random>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "soap/failure.h"
#include "soap/namespaces.h"

namespace brenmoor::soap {
namespace {

// Deeper answers are hostile, not real: no service record nests anywhere near this. Counted
// from a Body entry, through references.
constexpr uint32_t kMaxDepth = 128;
// Readers may make this many bytes of records per byte of answer, and a little more.
constexpr uint64_t kReadAllowancePerByte = 16;
constexpr uint64_t kReadAllowanceBase = 1u << 20;

std::string_view prefixOf(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? std::string_view{} : qname.substr(0, colon);
}

std::string_view localOf(std::string_view qname) {
  auto colon = qname.find(':');
  return colon == std::string_view::npos ? qname : qname.substr(colon + 1);
}

bool isXmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The expat name of a charset from the Content-Type; null lets the document say.
const char* expatEncoding(std::string_view charset, const std::string& source) {
  std::string c(charset);
  std::transform(c.begin(), c.end(), c.begin(), [](unsigned char ch) { return std::tolower(ch); });
  if (c.empty() || c == "utf-16") return nullptr;  // the byte order mark or the text decides
  if (c == "utf-8" || c == "utf8") return "UTF-8";
  if (c == "utf-16le") return "UTF-16LE";
  if (c == "utf-16be") return "UTF-16BE";
  if (c == "iso-8859-1" || c == "latin1" || c == "us-ascii" || c == "ascii") return "ISO-8859-1";
  throw Failure(kUnusableAnswer, "The answer from " + source + " uses the unknown charset " + c);
}

// Expat salts its hash tables against collision floods with a fresh random number per parser,
// a system call each time; one secret salt per process serves as well.
unsigned long hashSalt() {
  static const unsigned long salt = [] {
    std::random_device random;
    return (static_cast<unsigned long>(random()) << 32 | random()) | 1;
  }();
  return salt;
}

// A parser is kept per thread and reset for the next answer: creating one costs more than a
// small answer's whole parse.
struct KeptParser {
  XML_Parser parser = nullptr;
  ~KeptParser() {
    if (parser) XML_ParserFree(parser);
  }
};
thread_local KeptParser kept;

XML_Parser takeParser(const char* encoding) {
  XML_Parser parser = std::exchange(kept.parser, nullptr);
  if (parser && XML_ParserReset(parser, encoding)) return parser;
  if (parser) XML_ParserFree(parser);
  return XML_ParserCreate(encoding);
}

void keepParser(XML_Parser parser) {
  if (kept.parser) XML_ParserFree(kept.parser);
  kept.parser = parser;
}

}  // namespace

// Interned qualified names, found by an open-addressing table over their ids: every element
// and typed value looks its name up, so this is on the hottest path of the parser.
class NameTable {
 public:
  explicit NameTable(const std::vector<Answer::QualifiedName>& names) : names_(names) {
    slots_.assign(256, kEmpty);
  }

  // The id of (ns, local), or kEmpty; `slot` is where it would go.
  uint32_t find(std::string_view ns, std::string_view local, size_t& slot) const {
    const size_t mask = slots_.size() - 1;
    for (slot = hash(ns, local) & mask;; slot = (slot + 1) & mask) {
      const uint32_t id = slots_[slot];
      if (id == kEmpty) return kEmpty;
      const auto& name = names_[id];
      if (name.ns.data() == ns.data() && name.local == local) return id;
    }
  }

  void insert(size_t slot, uint32_t id) {
    slots_[slot] = id;
    if (++count_ * 2 > slots_.size()) grow();
  }

  static constexpr uint32_t kEmpty = UINT32_MAX;

 private:
  // Namespace URIs are interned, so their address stands for them.
  static size_t hash(std::string_view ns, std::string_view local) {
    uint64_t h = 14695981039346656037ull ^ reinterpret_cast<uintptr_t>(ns.data());
    for (unsigned char c : local) h = (h ^ c) * 1099511628211ull;
    return static_cast<size_t>(h ^ (h >> 29));
  }

  void grow() {
    std::vector<uint32_t> old(slots_.size() * 2, kEmpty);
    old.swap(slots_);
    const size_t mask = slots_.size() - 1;
    for (uint32_t id : old) {
      if (id == kEmpty) continue;
      size_t slot = hash(names_[id].ns, names_[id].local) & mask;
      while (slots_[slot] != kEmpty) slot = (slot + 1) & mask;
      slots_[slot] = id;
    }
  }

  const std::vector<Answer::QualifiedName>& names_;
  std::vector<uint32_t> slots_;
  size_t count_ = 0;
};

// Turns expat's events into an Answer. Namespace prefixes are resolved on the fly from a stack
// of the bindings in scope; names and namespace URIs are interned as they first appear.
class AnswerBuilder {
 public:
  AnswerBuilder(std::string source, const AnswerLimits& limits, uint64_t expectedBytes)
      : limits_(limits), maxElements_(limits.maxElements()) {
    answer_.source_ = std::move(source);
    // Room for what answers of this size usually hold, so that the arrays are not copied as
    // they grow; pages not written to cost no memory.
    expectedBytes = std::min(expectedBytes, limits.maxBytes);
    answer_.elements_.reserve(std::min<uint64_t>(expectedBytes / 40, limits.maxElements()));
    answer_.arena_.reserve(expectedBytes / 3);
    answer_.names_.push_back({});
    // Interned first, so that the attributes that matter are told apart by address.
    schemaInstanceNs_ = internNamespace(kSchemaInstanceNs);
    encodingNs_ = internNamespace(kEncodingNs);
    size_t slot = 0;
    internedNames_.find({}, {}, slot);
    internedNames_.insert(slot, 0);
  }

  void startElement(const char* rawName, const char** attributes) {
    finishRun();
    if (answer_.elements_.size() >= maxElements_) {
      fail(kGeneralFailure, "holds more than " + std::to_string(maxElements_) +
                                " elements, the limit for answers of at most " +
                                std::to_string(limits_.maxBytes) + " bytes");
    }

    // Envelope, Body and the entry stand above a value's levels. Refused as the element opens,
    // so that a hostile nesting costs no more than the allowed depth.
    if (open_.size() >= kMaxDepth + 3) deeperThanAllowed();
    const auto index = static_cast<uint32_t>(answer_.elements_.size());
    open_.push_back(
        {index, static_cast<uint32_t>(bindings_.size()), static_cast<uint32_t>(pending_.size())});
    for (const char** a = attributes; *a; a += 2) {
      if (!isNamespaceDeclaration(a[0])) continue;
      std::string_view name = a[0];
      if (name == "xmlns") {
        bindings_.push_back({std::string(), internNamespace(a[1])});
        ++defaultBindings_;
      } else if (name.starts_with("xmlns:")) {
        bindings_.push_back({std::string(name.substr(6)), internNamespace(a[1])});
      }
    }

    Answer::Element e{};
    std::string_view name = rawName;
    e.name = internName(resolve(prefixOf(name)), localOf(name));
    for (const char** a = attributes; *a; a += 2) {
      if (isNamespaceDeclaration(a[0])) continue;
      std::string_view attribute = a[0];
      std::string_view value = a[1];
      auto prefix = prefixOf(attribute);
      if (prefix.empty()) {
        if (attribute == "id") {
          ids_.push_back({store(value), index});
        } else if (attribute == "href" && !value.empty()) {
          if (value.front() != '#')
            fail(kUnusableAnswer, "refers to the external resource " + std::string(value));
          hrefs_.push_back({store(value.substr(1)), index});
        }
        continue;
      }
      auto ns = resolve(prefix);
      auto local = localOf(attribute);
      if (ns.data() == schemaInstanceNs_.data() && local == "type") {
        e.type = internName(resolve(prefixOf(value)), localOf(value));
      } else if (ns.data() == schemaInstanceNs_.data() && local == "nil") {
        e.nil = value == "true" || value == "1";
      } else if (ns.data() == encodingNs_.data() && local == "root") {
        e.referenceOnly = value == "0" || value == "false";
      }
    }
    answer_.elements_.push_back(e);

    if (open_.size() == 1) {
      const auto& n = answer_.names_[e.name];
      if (n.local != "Envelope" || n.ns != kEnvelopeNs) {
        fail(kUnusableAnswer,
             "is not a SOAP envelope (its root element is <" + std::string(name) + ">)");
      }
    } else if (open_.size() == 2 && body_ == kNone) {
      const auto& n = answer_.names_[e.name];
      if (n.local == "Body" && n.ns == kEnvelopeNs) body_ = index;
    } else if (open_.size() == 3 && open_[1].element == body_) {
      bodyEntries_.push_back(index);
    }
  }

  void endElement() {
    finishRun();
    const Open o = open_.back();
    open_.pop_back();
    auto& e = answer_.elements_[o.element];
    e.end = static_cast<uint32_t>(answer_.elements_.size());
    const std::string_view text(pending_.data() + o.textStart, pending_.size() - o.textStart);
    if (!text.empty()) {
      if (answer_.arena_.size() + text.size() > UINT32_MAX) {
        fail(kGeneralFailure, "holds more than 4 GiB of text");
      }
      e.text = static_cast<uint32_t>(answer_.arena_.size());
      e.textSize = static_cast<uint32_t>(text.size());
      answer_.arena_.append(text);
      // Qualified-name values (fault codes) need their prefix resolved where they stand.
      if (e.end == o.element + 1) noteQualifiedValue(o.element, text);
    }
    pending_.resize(o.textStart);
    runStart_ = pending_.size();
    while (bindings_.size() > o.bindings) {
      if (bindings_.back().prefix.empty()) --defaultBindings_;
      bindings_.pop_back();
    }
  }

  void characters(const char* data, int size) { pending_.append(data, static_cast<size_t>(size)); }

  // Text in a CDATA section is kept even when it is only white space.
  void startCdata() {
    finishRun();
    inCdata_ = true;
  }
  void endCdata() {
    inCdata_ = false;
    runStart_ = pending_.size();
  }

  Answer finish(uint64_t bytesReceived) {
    if (body_ == kNone) fail(kUnusableAnswer, "has no SOAP Body");
    resolveReferences();
    std::sort(answer_.valueNamespaces_.begin(), answer_.valueNamespaces_.end());
    if (!bodyEntries_.empty()) throwIfServerFault(Node(&answer_, bodyEntries_.front()));
    for (uint32_t entry : bodyEntries_) {
      if (!answer_.elements_[entry].referenceOnly) answer_.parameters_.push_back(entry);
    }
    checkDepthAndCycles();
    answer_.allowance_ = bytesReceived * kReadAllowancePerByte + kReadAllowanceBase;
    return std::move(answer_);
  }

  [[noreturn]] void fail(uint32_t code, const std::string& what) const {
    throw Failure(code, "The answer from " + answer_.source_ + " " + what);
  }

 private:
  static constexpr uint32_t kNone = UINT32_MAX;

  struct Open {
    uint32_t element;
    uint32_t bindings;   // size of the binding stack before its declarations
    uint32_t textStart;  // where its character data begins in pending_
  };
  struct Binding {
    std::string prefix;
    std::string_view uri;
  };
  struct StoredLabel {  // the text of an id or an href, in labels_
    uint32_t at;
    uint32_t size;
  };
  struct Label {
    StoredLabel text;
    uint32_t element;
  };

  [[noreturn]] void deeperThanAllowed() const {
    fail(kUnusableAnswer, "nests deeper than " + std::to_string(kMaxDepth) + " levels");
  }

  // White space between elements is layout, not text.
  void finishRun() {
    if (!inCdata_ && std::all_of(pending_.begin() + static_cast<std::ptrdiff_t>(runStart_),
                                 pending_.end(), isXmlSpace)) {
      pending_.resize(runStart_);
    }
    runStart_ = pending_.size();
  }

  static bool isNamespaceDeclaration(const char* attribute) {
    return std::strncmp(attribute, "xmlns", 5) == 0 &&
           (attribute[5] == '\0' || attribute[5] == ':');
  }

  std::string_view resolve(std::string_view prefix) const {
    // Most names have no prefix, and most answers declare no default namespace.
    if (prefix.empty() && defaultBindings_ == 0) return {};
    for (auto b = bindings_.rbegin(); b != bindings_.rend(); ++b) {
      if (b->prefix == prefix) return b->uri;
    }
    return {};
  }

  std::string_view internNamespace(std::string_view uri) {
    if (uri.empty()) return {};
    auto found = internedNamespaces_.find(uri);
    if (found != internedNamespaces_.end()) return *found;
    const std::string& kept = answer_.strings_.emplace_back(uri);
    return *internedNamespaces_.emplace(kept).first;
  }

  uint32_t internName(std::string_view ns, std::string_view local) {
    size_t slot = 0;
    if (uint32_t id = internedNames_.find(ns, local, slot); id != NameTable::kEmpty) return id;
    const auto id = static_cast<uint32_t>(answer_.names_.size());
    if (id >= (1u << 28)) fail(kGeneralFailure, "holds too many distinct names");
    const std::string& kept = answer_.strings_.emplace_back(local);
    answer_.names_.push_back({kept, ns});
    internedNames_.insert(slot, id);
    return id;
  }

  StoredLabel store(std::string_view text) {
    StoredLabel stored{static_cast<uint32_t>(labels_.size()), static_cast<uint32_t>(text.size())};
    if (labels_.size() + text.size() > UINT32_MAX) fail(kGeneralFailure, "holds too many ids");
    labels_.append(text);
    return stored;
  }

  std::string_view labelText(const Label& l) const {
    return {labels_.data() + l.text.at, l.text.size};
  }

  void noteQualifiedValue(uint32_t element, std::string_view text) {
    auto prefix = prefixOf(text);
    if (prefix.empty() ||
        !(std::isalpha(static_cast<unsigned char>(prefix.front())) || prefix.front() == '_')) {
      return;
    }
    if (text.find_first_of(" /") != std::string_view::npos) return;
    if (auto ns = resolve(prefix); !ns.empty()) answer_.valueNamespaces_.emplace_back(element, ns);
  }

  // Points every href at the first element with its id.
  void resolveReferences() {
    if (hrefs_.empty()) return;
    std::unordered_map<std::string_view, uint32_t> byId;
    byId.reserve(ids_.size());
    for (const auto& id : ids_) byId.emplace(labelText(id), id.element);
    for (const auto& href : hrefs_) {
      auto found = byId.find(labelText(href));
      if (found == byId.end()) {
        fail(kUnusableAnswer, "refers to the missing element #" + std::string(labelText(href)));
      }
      // An element that refers to itself is simply its own value.
      if (found->second == href.element) continue;
      auto& e = answer_.elements_[href.element];
      e.isReference = 1;
      e.text = found->second;
      e.textSize = 0;
    }
  }

  // Walks every value reachable from the parameters once (shared values are not walked again),
  // refusing reference cycles and values nested deeper than kMaxDepth through references.
  void checkDepthAndCycles() {
    // Per element: not seen, on the current path, or done with its height (levels below it).
    enum : uint8_t { kUnseen = 0, kOnPath = 1, kDone = 2 };
    std::vector<uint8_t> state(answer_.elements_.size(), kUnseen);
    struct Step {
      uint32_t value;
      uint32_t next;        // the next child element to look at
      uint32_t height = 0;  // of the children done so far, plus one
    };
    std::vector<Step> path;
    auto enter = [&](uint32_t value) {
      if (path.size() > kMaxDepth) deeperThanAllowed();
      state[value] = kOnPath;
      path.push_back({value, value + 1});
    };
    for (uint32_t parameter : answer_.parameters_) {
      const uint32_t start = answer_.valueOf(parameter);
      if (state[start] == kUnseen) enter(start);
      while (!path.empty()) {
        Step& step = path.back();
        if (step.next >= answer_.elements_[step.value].end) {
          const uint32_t height = step.height;
          if (height > kMaxDepth) deeperThanAllowed();
          state[step.value] = static_cast<uint8_t>(kDone + height);
          path.pop_back();
          if (!path.empty()) path.back().height = std::max(path.back().height, height + 1);
          continue;
        }
        const uint32_t child = step.next;
        step.next = answer_.elements_[child].end;
        const uint32_t target = answer_.valueOf(child);
        if (state[target] == kOnPath) {
          const auto& name = answer_.names_[answer_.elements_[target].name];
          fail(kUnusableAnswer,
               "holds a reference cycle through <" + std::string(name.local) + ">");
        }
        if (state[target] == kUnseen) {
          enter(target);
        } else {
          step.height = std::max<uint32_t>(step.height, state[target] - kDone + 1);
        }
      }
    }
  }

  void throwIfServerFault(Node first) const {
    if (first.name() != "Fault" || first.ns() != kEnvelopeNs) return;
    Node code = first.child("faultcode");
    std::string text;
    if (code && code.valueNamespace() != kEnvelopeNs) {
      text += '{';
      text += code.valueNamespace();
      text += '}';
    }
    if (code) text += code.valueLocalName();
    text += " : ";
    if (Node faultString = first.child("faultstring")) text += faultString.text();
    throw Failure(kServerFault, text);
  }

  AnswerLimits limits_;
  uint64_t maxElements_;
  Answer answer_;
  std::vector<Open> open_;
  std::vector<Binding> bindings_;
  std::string_view schemaInstanceNs_;
  std::string_view encodingNs_;
  size_t defaultBindings_ = 0;  // default namespace declarations in scope
  std::string pending_;         // character data of the open elements, innermost last
  size_t runStart_ = 0;         // where the current run of character data began
  bool inCdata_ = false;
  uint32_t body_ = kNone;
  std::vector<uint32_t> bodyEntries_;
  std::string labels_;
  std::vector<Label> ids_;
  std::vector<Label> hrefs_;
  NameTable internedNames_{answer_.names_};
  std::unordered_set<std::string_view> internedNamespaces_;
};

struct AnswerParser::Impl {
  Impl(std::string_view charset, std::string source, const AnswerLimits& limits,
       uint64_t expectedBytes)
      : builder(source, limits, expectedBytes),
        limits(limits),
        encoding(expatEncoding(charset, source)),
        namedEncoding(encoding) {}
  ~Impl() {
    if (parser) keepParser(parser);
  }

  // Made at the first bytes: UTF-16, told by its byte order mark or its first character, is
  // named to expat outright, since its declaration may still claim UTF-8.
  void start(std::string_view first) {
    if (!encoding && first.size() >= 2) {
      const auto b0 = static_cast<unsigned char>(first[0]),
                 b1 = static_cast<unsigned char>(first[1]);
      if ((b0 == 0xff && b1 == 0xfe) || (b0 == '<' && b1 == 0)) encoding = "UTF-16LE";
      if ((b0 == 0xfe && b1 == 0xff) || (b0 == 0 && b1 == '<')) encoding = "UTF-16BE";
    }
    parser = takeParser(encoding);
    if (!parser) throw Failure(kGeneralFailure, "Out of memory creating an XML parser");
    XML_SetHashSalt(parser, hashSalt());
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onCharacters);
    XML_SetCdataSectionHandler(parser, onStartCdata, onEndCdata);
    XML_SetStartDoctypeDeclHandler(parser, onDoctype);
  }

  // Expat is C: what a handler throws is kept, the parse stopped, and the failure thrown again
  // once expat has returned.
  template <class F>
  static void guarded(void* user, F&& f) {
    auto* self = static_cast<Impl*>(user);
    // Expat still reports the end of an empty element whose start failed: after a failure no
    // handler runs, or that end would close an element that was never added.
    if (self->failure) return;
    try {
      f(self->builder);
    } catch (...) {
      self->failure = std::current_exception();
      XML_StopParser(self->parser, XML_FALSE);
    }
  }
  static void XMLCALL onStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    guarded(user, [&](AnswerBuilder& b) { b.startElement(name, attributes); });
  }
  static void XMLCALL onEnd(void* user, const XML_Char*) {
    guarded(user, [](AnswerBuilder& b) { b.endElement(); });
  }
  static void XMLCALL onCharacters(void* user, const XML_Char* data, int size) {
    guarded(user, [&](AnswerBuilder& b) { b.characters(data, size); });
  }
  static void XMLCALL onStartCdata(void* user) {
    guarded(user, [](AnswerBuilder& b) { b.startCdata(); });
  }
  static void XMLCALL onEndCdata(void* user) {
    guarded(user, [](AnswerBuilder& b) { b.endCdata(); });
  }
  static void XMLCALL onDoctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*,
                                int) {
    guarded(user, [](AnswerBuilder& b) {
      b.fail(kUnusableAnswer, "declares a document type, which a SOAP message must not");
    });
  }

  void parse(const char* data, size_t size, bool last) {
    if (XML_Parse(parser, data, static_cast<int>(size), last) == XML_STATUS_OK) return;
    if (failure) std::rethrow_exception(failure);
    // A charset named by the Content-Type overrides the document's own: say which was used,
    // since a body in another charset fails here.
    const std::string readAs =
        namedEncoding ? std::string(" in ") + namedEncoding + ", the charset its Content-Type names"
                      : "";
    builder.fail(kUnusableAnswer, "is not well-formed XML" + readAs + ": " +
                                      XML_ErrorString(XML_GetErrorCode(parser)) + " at byte " +
                                      std::to_string(XML_GetCurrentByteIndex(parser)));
  }

  AnswerBuilder builder;
  AnswerLimits limits;
  const char* encoding;
  const char* namedEncoding;  // by the Content-Type; null when the document decides
  XML_Parser parser = nullptr;
  std::exception_ptr failure;
  uint64_t received = 0;
  std::string firstBytes;  // held until there are two
};

AnswerParser::AnswerParser(std::string_view charset, std::string source, const AnswerLimits& limits,
                           uint64_t expectedBytes)
    : impl_(std::make_unique<Impl>(charset, std::move(source), limits, expectedBytes)) {}

AnswerParser::~AnswerParser() = default;

void AnswerParser::feed(std::string_view chunk) {
  auto& x = *impl_;
  x.received += chunk.size();
  if (x.received > x.limits.maxBytes) {
    x.builder.fail(kGeneralFailure, "exceeds the answer limit of " +
                                        std::to_string(x.limits.maxBytes) + " bytes (" +
                                        std::to_string(x.received) + " bytes received)");
  }
  if (!x.parser) {
    // Two bytes tell UTF-16 apart; a first chunk of one byte waits for the next.
    if (x.firstBytes.size() + chunk.size() < 2) {
      x.firstBytes.append(chunk);
      return;
    }
    x.start(x.firstBytes + std::string(chunk.substr(0, 2)));
    if (!x.firstBytes.empty()) x.parse(x.firstBytes.data(), x.firstBytes.size(), false);
  }
  // Expat takes an int length: big chunks go in pieces.
  constexpr size_t kPiece = 1u << 30;
  while (chunk.size() > kPiece) {
    x.parse(chunk.data(), kPiece, false);
    chunk.remove_prefix(kPiece);
  }
  x.parse(chunk.data(), chunk.size(), false);
}

Answer AnswerParser::finish() {
  auto& x = *impl_;
  if (x.received == 0) x.builder.fail(kUnusableAnswer, "is empty");
  if (!x.parser) {
    x.start(x.firstBytes);
    x.parse(x.firstBytes.data(), x.firstBytes.size(), false);
  }
  x.parse(nullptr, 0, true);
  return x.builder.finish(x.received);
}

Answer Answer::parse(std::string_view body, std::string_view charset, std::string_view source,
                     const AnswerLimits& limits) {
  AnswerParser parser(charset, std::string(source), limits, body.size());
  parser.feed(body);
  return parser.finish();
}

}  // namespace brenmoor::soap

#pragma once
// Request elements and the envelope writer. The text written is byte for byte the wire format
// of docs/protocol.md: the service compares requests exactly, and so do our tests.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "brenmoor/date.h"

namespace brenmoor::soap {

struct Element;

using StringArray = std::vector<std::string>;

// An element holding other elements, written without a type attribute.
struct Structure {
  std::vector<Element> children;
};

// A date on the wire is UTC; the caller converts before adding it.
using Value =
    std::variant<std::string, int16_t, int32_t, bool, double, Date, StringArray, Structure>;

struct Element {
  std::string_view name;  // always a literal of the operation's declaration
  Value value;
};

// The request envelope of `operation` in namespace `namespaceUri`. `withoutDeclaration` is the
// service object's envelope option: set, the text starts directly with the Envelope element.
std::string writeEnvelope(std::string_view namespaceUri, std::string_view operation,
                          const std::vector<Element>& elements, bool withoutDeclaration = true);

}  // namespace brenmoor::soap

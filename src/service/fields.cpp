#include "service/fields.h"

#include "soap/failure.h"

namespace brenmoor::service {

soap::Node Fields::find(std::string_view name) const {
  const auto children = node_.children();
  const soap::Answer& answer = node_.answer();
  const auto lookFrom = [&](auto from, auto to) -> soap::Node {
    for (auto it = from; it != to; ++it) {
      answer.spend(kLookupCost);
      const soap::Node c = *it;
      if (c.name() == name && c.ns().empty()) {
        cursor_ = std::next(it);
        return c;
      }
    }
    return {};
  };
  if (soap::Node found = lookFrom(cursor_, children.end())) return found;
  if (soap::Node found = lookFrom(children.begin(), cursor_)) return found;
  if (missing_ == Missing::Fails) {
    throw soap::Failure(soap::kGeneralFailure, "The answer element <" + std::string(node_.name()) +
                                                   "> lacks its child <" + std::string(name) + ">");
  }
  return {};
}

}  // namespace brenmoor::service

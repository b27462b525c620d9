#pragma once
// How operations read their answers: a record's fields by element name, one line each.
//
//   void readDeploymentInfo(const Fields& in, DeploymentInfo& info) {
//     in("deployed", info.deployed);
//     in("height", info.height);
//
// Each field is set through its setter, so flagged fields raise their flag. A date is read as
// xsd:dateTime and moved to local time; a nil date (or, with Dates::OnlyTyped, one that is not
// typed xsd:dateTime) is skipped and leaves its flag down. Other nil values set the type's empty
// value. Everything read is charged to the answer's allowance (soap::Answer::spend), so an
// answer whose items all share one large value cannot make readers copy it without bound.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "brenmoor/collection.h"
#include "brenmoor/date.h"
#include "soap/answer.h"
#include "util/convert.h"
#include "util/datetime.h"
#include "util/time_zone.h"

namespace brenmoor::service {

class Fields {
 public:
  // What a child missing from the answer does: fail the operation, leave the field alone, or
  // set the field's empty value (raising its flag).
  enum class Missing { Fails, KeepsDefault, SetsEmpty };
  // Which date children are read: every one that is not nil, or only those typed xsd:dateTime.
  enum class Dates { UnlessNil, OnlyTyped };

  explicit Fields(soap::Node node, Missing missing = Missing::Fails, Dates dates = Dates::UnlessNil)
      : node_(node), missing_(missing), dates_(dates), cursor_(node.children().begin()) {}

  // The same element, read by other rules.
  Fields reading(Missing missing, Dates dates = Dates::UnlessNil) const {
    return Fields(node_, missing, dates);
  }

  // Sets `property` from the child `name`.
  template <class Prop>
  void operator()(std::string_view name, Prop& property) const {
    using T = typename Prop::value_type;
    const soap::Node child = find(name);
    if (!child) {
      if (missing_ == Missing::SetsEmpty) property.set(T{});
      return;
    }
    if constexpr (std::is_same_v<T, Date>) {
      if (dates_ == Dates::OnlyTyped && !child.isDateTime()) return;
    }
    if (child.nil()) {
      if constexpr (!std::is_same_v<T, Date>) property.set(T{});
      return;
    }
    property.set(convert<T>(child));
  }

  // A plain value by name, for records with plain members; `fallback` when missing (if allowed)
  // or nil.
  template <class T>
  T value(std::string_view name, T fallback = T{}) const {
    const soap::Node child = find(name);
    return child && !child.nil() ? convert<T>(child) : fallback;
  }

  // The element's own value.
  template <class T>
  T as() const {
    return convert<T>(node_);
  }
  bool nil() const { return node_.nil(); }

  // A child read as a nested record by the same rules; nothing when it is missing.
  std::optional<Fields> child(std::string_view name) const {
    const soap::Node found = node_.child(name);
    node_.answer().spend(kLookupCost);
    if (!found) return std::nullopt;
    return Fields(found, missing_, dates_);
  }

  // Calls `read` with each child element in order, read by the same rules.
  template <class Read>
  void forEachItem(Read&& read) const {
    for (soap::Node item : node_.children()) {
      node_.answer().spend(kItemCost);
      read(Fields(item, missing_, dates_));
    }
  }

 private:
  static constexpr uint64_t kLookupCost = 1;
  static constexpr uint64_t kValueCost = 16;
  static constexpr uint64_t kItemCost = 64;

  template <class T>
  T convert(const soap::Node& n) const {
    const std::string_view text = n.text();
    node_.answer().spend(kValueCost + text.size());
    if constexpr (std::is_same_v<T, std::string>) return std::string(text);
    if constexpr (std::is_same_v<T, bool>) return util::toBool(text);
    if constexpr (std::is_same_v<T, int32_t>) return util::toInt32(text);
    if constexpr (std::is_same_v<T, int16_t>) return util::toInt16(text);
    if constexpr (std::is_same_v<T, double>) return util::toDouble(text);
    if constexpr (std::is_same_v<T, Date>) return util::utcToLocal(util::parseDateTime(text));
  }

  // The child by name, or a null node when it is missing and that is allowed. Fields are
  // usually read in the order the answer lists them, so the search starts after the child found
  // last; each child looked at is charged.
  soap::Node find(std::string_view name) const;

  soap::Node node_;
  Missing missing_;
  Dates dates_;
  mutable soap::Node::Children::iterator cursor_;
};

// A collection of the element children of `list`, in order, each read into a new T by `read`.
template <class T, class Read>
std::shared_ptr<Collection<T>> readList(const Fields& list, Read&& read) {
  auto items = std::make_shared<Collection<T>>();
  list.forEachItem([&](const Fields& item) {
    auto record = std::make_shared<T>();
    read(item, *record);
    items->Add(std::move(record));
  });
  return items;
}

}  // namespace brenmoor::service

#pragma once
// Fills record fields from the children of an answer node, one line per field:
//
//   RecordReader in(node, RecordReader::Missing::Fails);
//   in("height", info.height);
//
// Each field is set through its setter, so flagged fields raise their flag. A date is read as
// xsd:dateTime and moved to local time; a nil date (or, with Dates::OnlyTyped, one that is not
// typed xsd:dateTime) is skipped and leaves its flag down. Other nil values set the type's empty
// value.

#include <memory>
#include <string>
#include <string_view>

#include "brenmoor/collection.h"
#include "brenmoor/date.h"
#include "soap/answer.h"
#include "soap/datetime.h"
#include "soap/failure.h"
#include "util/convert.h"
#include "util/time_zone.h"

namespace brenmoor::util {

class RecordReader {
 public:
  // What a child missing from the answer does: fail the operation, leave the field alone, or
  // set the field's empty value (raising its flag).
  enum class Missing { Fails, KeepsDefault, SetsEmpty };
  // Which date children are read: every one that is not nil, or only those typed xsd:dateTime.
  enum class Dates { UnlessNil, OnlyTyped };

  RecordReader(const soap::Node& node, Missing missing, Dates dates = Dates::UnlessNil)
      : node_(node), missing_(missing), dates_(dates) {}

  // The child by name, or null when it is missing and that is allowed.
  const soap::Node* child(std::string_view name) const {
    const soap::Node* found = node_.child(name);
    if (!found && missing_ == Missing::Fails) {
      throw soap::Failure(
          soap::kGeneralFailure,
          "The answer element <" + node_.name + "> lacks its child <" + std::string(name) + ">");
    }
    return found;
  }

  template <class Prop>
  void operator()(std::string_view name, Prop& property) const {
    using T = typename Prop::value_type;
    const soap::Node* child = this->child(name);
    if (!child) {
      if (missing_ == Missing::SetsEmpty) property.set(T{});
      return;
    }
    if constexpr (std::is_same_v<T, Date>) {
      if (dates_ == Dates::OnlyTyped && !child->isDateTime()) return;
    }
    if (child->nil()) {
      if constexpr (!std::is_same_v<T, Date>) property.set(T{});
      return;
    }
    property.set(convert<T>(child->text()));
  }

  // A plain value by name, for records with plain members; `fallback` when missing (if allowed)
  // or nil.
  template <class T>
  T value(std::string_view name, T fallback = T{}) const {
    const soap::Node* found = child(name);
    return found && !found->nil() ? convert<T>(found->text()) : fallback;
  }

 private:
  template <class T>
  static T convert(const std::string& text) {
    if constexpr (std::is_same_v<T, std::string>) return text;
    if constexpr (std::is_same_v<T, bool>) return toBool(text);
    if constexpr (std::is_same_v<T, int32_t>) return toInt32(text);
    if constexpr (std::is_same_v<T, int16_t>) return toInt16(text);
    if constexpr (std::is_same_v<T, double>) return toDouble(text);
    if constexpr (std::is_same_v<T, Date>) return utcToLocal(soap::parseDateTime(text));
  }

  const soap::Node& node_;
  Missing missing_;
  Dates dates_;
};

// A collection made of the element children of `list`, in order, each read by `readOne`.
template <class T, class ReadOne>
std::shared_ptr<Collection<T>> readList(const soap::Node& list, ReadOne&& readOne) {
  auto items = std::make_shared<Collection<T>>();
  for (const auto& item : list.children()) items->Add(readOne(*item));
  return items;
}

}  // namespace brenmoor::util

#pragma once
// Fills record properties from the children of an answer node, one line per field:
//
//   RecordReader in(node, RecordReader::Missing::Fails);
//   in("height", info.height);
//
// Each property is set through its setter, so flagged properties raise their flag. A date is
// read as xsd:dateTime and moved to local time; a nil date is skipped and leaves its flag down.
// Other nil values set the type's empty value.

#include <string>
#include <string_view>

#include "brenmoor/date.h"
#include "soap/answer.h"
#include "soap/datetime.h"
#include "soap/failure.h"
#include "util/convert.h"
#include "util/time_zone.h"

namespace brenmoor::util {

class RecordReader {
 public:
  // What a child missing from the answer does: fail the operation, or leave the field alone.
  enum class Missing { Fails, KeepsDefault };

  RecordReader(const soap::Node& node, Missing missing) : node_(node), missing_(missing) {}

  template <class Prop>
  void operator()(std::string_view name, Prop& property) const {
    using T = typename Prop::value_type;
    const soap::Node* child = node_.child(name);
    if (!child) {
      if (missing_ == Missing::KeepsDefault) return;
      throw soap::Failure(
          soap::kGeneralFailure,
          "The answer element <" + node_.name + "> lacks its child <" + std::string(name) + ">");
    }
    if (child->nil) {
      if constexpr (!std::is_same_v<T, Date>) property.set(T{});
      return;
    }
    property.set(convert<T>(child->text));
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
};

}  // namespace brenmoor::util

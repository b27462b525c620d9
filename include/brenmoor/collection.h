#pragma once
// An ordered, 1-based list, as list operations return it. Records are held by shared pointer,
// since the host may keep an item after dropping the list; plain values (numbers, strings,
// dates) by value.

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "brenmoor/date.h"
#include "brenmoor/error.h"

namespace brenmoor {

template <class T>
inline constexpr bool kHeldByValue =
    std::is_arithmetic_v<T> || std::is_same_v<T, std::string> || std::is_same_v<T, Date>;

template <class T>
class Collection {
 public:
  using value_type = std::conditional_t<kHeldByValue<T>, T, std::shared_ptr<T>>;

  int32_t Count() const noexcept { return static_cast<int32_t>(items_.size()); }

  // Throws Error::SubscriptOutOfRange unless 1 <= index <= Count().
  const value_type& Item(int32_t index) const {
    if (index < 1 || index > Count()) {
      throw Error(Error::SubscriptOutOfRange, "Subscript out of range");
    }
    return items_[static_cast<size_t>(index - 1)];
  }

  void Add(value_type item) { items_.push_back(std::move(item)); }

  auto begin() const noexcept { return items_.begin(); }
  auto end() const noexcept { return items_.end(); }

 private:
  std::vector<value_type> items_;
};

}  // namespace brenmoor

#pragma once
// Properties of the result records. A record declares each field on one line:
//
//   Field<int32_t> height;                 // plain storage
//   FlaggedField<std::string> name;        // storage plus its `nameOccurs` flag
//
// Read with `record.name()`, write with `record.name = "x"` or `record.name.set("x")`. Writing a
// flagged property also raises its flag, even for an empty value; `record.name.occurs()` reads the
// flag (the record's `nameOccurs`) and `record.name.setOccurs(false)` changes it alone.

#include <utility>

namespace brenmoor {

template <class T>
class Field {
 public:
  using value_type = T;

  Field() = default;
  explicit Field(T initial) : value_(std::move(initial)) {}

  const T& operator()() const noexcept { return value_; }
  void set(T value) { value_ = std::move(value); }
  Field& operator=(T value) {
    set(std::move(value));
    return *this;
  }

 private:
  T value_{};
};

template <class T>
class FlaggedField {
 public:
  using value_type = T;

  FlaggedField() = default;
  // A starting value that does not count as set: the flag stays down.
  explicit FlaggedField(T initial) : value_(std::move(initial)) {}

  const T& operator()() const noexcept { return value_; }
  void set(T value) {
    value_ = std::move(value);
    occurs_ = true;
  }
  FlaggedField& operator=(T value) {
    set(std::move(value));
    return *this;
  }

  // Whether the value was ever set (by the answer that filled the record, or by the caller).
  bool occurs() const noexcept { return occurs_; }
  void setOccurs(bool occurs) noexcept { occurs_ = occurs; }

 private:
  T value_{};
  bool occurs_ = false;
};

}  // namespace brenmoor

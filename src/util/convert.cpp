#include "util/convert.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <string>

#include "brenmoor/error.h"

namespace brenmoor::util {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  auto first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

[[noreturn]] void mismatch(std::string_view text, const char* type) {
  throw Error(Error::TypeMismatch,
              "Type mismatch: \"" + std::string(text.substr(0, 64)) + "\" is not " + type);
}

template <class Int>
Int toInteger(std::string_view text, const char* type) {
  auto t = trimmed(text);
  if (!t.empty() && t.front() == '+') t.remove_prefix(1);
  Int value{};
  auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), value);
  if (ec == std::errc::result_out_of_range) throw Error(Error::Overflow, "Overflow");
  if (t.empty() || ec != std::errc() || end != t.data() + t.size()) mismatch(text, type);
  return value;
}

}  // namespace

bool toBool(std::string_view text) {
  auto t = trimmed(text);
  auto is = [&](std::string_view word) {
    return t.size() == word.size() &&
           std::equal(t.begin(), t.end(), word.begin(), [](char a, char b) {
             return std::tolower(static_cast<unsigned char>(a)) == b;
           });
  };
  if (is("true")) return true;
  if (is("false")) return false;
  // Any number reads as a boolean too: zero is false.
  double number = 0;
  auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), number);
  if (t.empty() || ec != std::errc() || end != t.data() + t.size()) mismatch(text, "a boolean");
  return number != 0;
}

int32_t toInt32(std::string_view text) {
  return toInteger<int32_t>(text, "a 32-bit integer");
}

int16_t toInt16(std::string_view text) {
  return toInteger<int16_t>(text, "a 16-bit integer");
}

double toDouble(std::string_view text) {
  auto t = trimmed(text);
  if (t == "INF") return std::numeric_limits<double>::infinity();
  if (t == "-INF") return -std::numeric_limits<double>::infinity();
  if (t == "NaN") return std::numeric_limits<double>::quiet_NaN();
  double value = 0;
  auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), value);
  if (t.empty() || ec != std::errc() || end != t.data() + t.size()) mismatch(text, "a number");
  return value;
}

int32_t percentHalfEven(int64_t part, int64_t whole) {
  if (whole <= 0) return 0;
  const int64_t scaled = part * 100;
  int64_t q = scaled / whole;
  const int64_t twiceRest = 2 * (scaled % whole);
  if (twiceRest > whole || (twiceRest == whole && q % 2 != 0)) ++q;
  return static_cast<int32_t>(q);
}

}  // namespace brenmoor::util

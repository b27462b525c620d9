#pragma once
// Converting answer text to typed values. Surrounding white space is ignored. Text of another
// type throws Error::TypeMismatch; a number out of range throws Error::Overflow.

#include <cstdint>
#include <string_view>

namespace brenmoor::util {

bool toBool(std::string_view text);  // true/false in any case, or a number (zero is false)
int32_t toInt32(std::string_view text);
int16_t toInt16(std::string_view text);
double toDouble(std::string_view text);

// part * 100 / whole as a whole percent, halves going to the even neighbour; 0 for no whole.
int32_t percentHalfEven(int64_t part, int64_t whole);

}  // namespace brenmoor::util

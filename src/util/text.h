#pragma once
// Text helpers for the library's own XML forms and for names the service accepts.

#include <string>
#include <string_view>

namespace brenmoor::util {

// Escapes & < > " and ' as entities (an existing entity is escaped again).
std::string escapeXml(std::string_view text);

// Appends `text` with & < > and " escaped, and ' too when asked.
void appendEscaped(std::string& out, std::string_view text, bool apostrophe);

// Removes carriage returns, line feeds, NULs, form feeds and vertical tabs; tabs stay.
std::string& stripControlChars(std::string& text);

// Strips control characters and the punctuation that the service refuses in names
// (~`!@#$%^&*()+={}[]|\:;"'<>,?/.), then, if asked, turns spaces into underscores.
std::string cleanName(std::string text, bool replaceSpaces);

}  // namespace brenmoor::util

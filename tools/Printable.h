#pragma once

#include <string>
#include <string_view>

/// The text as it can be shown: on one line, in well-formed UTF-8, and without control characters that a
/// terminal would obey. Such bytes and the backslash are written as JSON escapes, \u00XX standing for one
/// byte; inside a settings document they read back to the same bytes.
std::string Printable(std::string_view text);

/// The same in double quotes, with those of the text escaped: a JSON string.
std::string Quoted(std::string_view text);

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

// Whatever comes from a document, a file's name or the command line passes here before it is shown.

/// The string as it can be shown: on one line, in well-formed UTF-8, and without characters that a terminal
/// would obey: no control characters, and none that reorder or end lines. Such bytes and the backslash are
/// written as JSON escapes, \u00XX for one byte; inside a settings document they read back to the
/// same bytes.
std::string Printable(std::string_view text);

/// The same in double quotes, with its own ones escaped: a JSON string.
std::string Quoted(std::string_view text);

/// JSON text, a dump for example, as a terminal can show it: the same with what no terminal should get as
/// escapes. It reads back to the same values.
std::string PrintableJson(std::string_view json);

/// The same for other readers of JSON, to which \uXXXX is a character and not a byte; for compact JSON text.
std::string StandardJson(std::string_view json);

/// The string as JSON within a page: without markup, and with \u00XX for a byte that is no UTF-8, as
/// recordings have it.
std::string PageJson(std::string_view text);

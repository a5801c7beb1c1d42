#pragma once

#include <string_view>

/// The label in a full signature as the compiler writes it: scope, class and method, without return type and
/// parameters. A text with no label in it is returned whole. A part of the text given.
std::string_view FunctionLabel(std::string_view prettyFunction);

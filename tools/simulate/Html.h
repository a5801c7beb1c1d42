// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace simulate {

/// The string as an HTML document can have it, between tags and in quoted attributes: what no page can show
/// is escaped as Printable() does, and a string of more than 400 bytes is cut.
std::string HtmlText(std::string_view text);

}  // namespace simulate

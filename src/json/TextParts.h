#pragma once

#include <string_view>
#include <vector>

namespace json {

// The parts of a text that is known to be well-formed, as slices of it: what values do not keep, their
// places. All results live as long as the text.

/// A member of an object: its key, quotes included, and its value.
struct MemberText {
  std::string_view key;
  std::string_view value;
};

/// The document's one value, without the white space around it.
std::string_view DocumentOf(std::string_view text);

/// Puts in `members` those of an object, in the order of the text; equal keys as often as they stand there.
void ReadMembers(std::string_view object, std::vector<MemberText>& members);

/// The elements of an array.
std::vector<std::string_view> ElementsOf(std::string_view array);

}  // namespace json

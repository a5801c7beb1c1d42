// SPDX-License-Identifier: Apache-2.0
#include "DidYouMean.h"

#include "Printable.h"
#include "documents/NearestName.h"

std::string DidYouMean(std::string_view text, std::span<const std::string> known) {
  kalStore::internal::NearestName nearest(text);
  for (const std::string& name : known) nearest.Consider(name);
  const std::string found = nearest.Result();
  return found.empty() ? "" : " (did you mean " + Quoted(found) + "?)";
}

#include "FunctionLabel.h"

std::string_view FunctionLabel(std::string_view prettyFunction) {
  const std::size_t end = prettyFunction.find('(');
  if (end == std::string_view::npos) return prettyFunction;
  const std::string_view head = prettyFunction.substr(0, end);
  const std::string_view label = head.substr(head.rfind(' ') + 1);  // Without a blank: from 0.
  return label.empty() ? prettyFunction : label;
}

#include "HelpFormatter.h"

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  if (option->get_positional()) return option->get_expected_max() > 1 ? "..." : "";
  return option->get_items_expected_max() == 0 ? "" : " " + option->get_type_name();
}

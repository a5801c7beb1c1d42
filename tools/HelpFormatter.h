#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// The help as CLI11 writes it, but with nothing beside an option's name except what stands for its value.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override;
};

// SPDX-License-Identifier: Apache-2.0
#include "ParseErrors.h"

#include <vector>

#include "DidYouMean.h"

namespace {

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// An argument that nothing takes.
std::string Unexpected(const std::string& argument, const CLI::App& app, const CLI::App& command) {
  if (argument.size() > 1 && argument.front() == '-') {
    const std::string option = argument.substr(0, argument.find('='));
    return "there is no option \"" + option + "\"" + DidYouMean(option, OptionNames(command));
  }
  if (&command == &app) {
    return "there is no command \"" + argument + "\"" + DidYouMean(argument, CommandNames(app));
  }
  return "\"" + argument + "\" is one argument too many";
}

// What CLI11 says of the number of an option's values, in the words of the other messages.
std::string AboutValues(const std::string& message) {
  const std::string option = message.substr(0, message.find(':'));
  return option + (message.ends_with("missing") ? ": a value is missing" : ": it is given more than once");
}

// What CLI11 says of a flag's value, "Could not convert: --json = foo". The values of options pass their own
// checks.
std::string AboutFlag(const std::string& message) {
  const std::size_t value = message.find(" = ");
  if (value == std::string::npos) return message;
  const std::size_t option = message.rfind(' ', value - 1) + 1;
  return message.substr(option, value - option) + ": expected no value, not \"" + message.substr(value + 3) +
         '"';
}

std::string Reason(const CLI::ParseError& error, const CLI::App& app, const CLI::App& command) {
  const std::vector<std::string> unexpected = app.remaining(true);
  const bool isIncomplete = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (isIncomplete || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    if (!unexpected.empty()) return Unexpected(unexpected.front(), app, command);
    if (&command == &app) return "a command is missing";
  }
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) return AboutFlag(error.what());
  const bool isAboutValues = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
  return isAboutValues ? AboutValues(error.what()) : error.what();
}

}  // namespace

std::string Explained(const CLI::ParseError& error, const CLI::App& app) {
  const std::vector<CLI::App*> running = app.get_subcommands();
  const CLI::App& command = running.empty() ? app : *running.front();
  return Reason(error, app, command) + " (tessel " + (running.empty() ? "" : command.get_name() + " ") +
         "--help tells more)";
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

/// Ends a command with kExitNotUsable. what() is the whole line for standard error, without its end;
/// "" when the reason is there already. Thrown before a command has written anything to standard output.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A command line that cannot be used.
class UsageError : public CommandError {
 public:
  explicit UsageError(const std::string& reason) : CommandError("tessel: " + reason) {}
};

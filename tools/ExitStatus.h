// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// What the program returns to the shell, the same for every command.
enum ExitStatus : int {
  kExitFine = 0,       ///< Done, nothing to report.
  kExitFindings = 1,   ///< Done, and there are findings or differences.
  kExitNotUsable = 2,  ///< The command line, an input or standard output cannot be used.
};

/// The section of a command's help that says what its exit statuses mean; without `findings`, it has no 1.
inline std::string ExitStatusHelp(const std::string& fine, const std::string& findings = "") {
  return "Exit status:\n  0  " + fine + "\n" + (findings.empty() ? "" : "  1  " + findings + "\n") +
         "  2  the command line, an input or standard output cannot be used";
}

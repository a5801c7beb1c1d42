#pragma once

/// What the program returns to the shell, the same for every command.
enum ExitStatus : int {
  kExitFine = 0,       ///< Done, nothing to report.
  kExitFindings = 1,   ///< Done, and there are findings or differences.
  kExitNotUsable = 2,  ///< The command line, an input or standard output cannot be used.
};

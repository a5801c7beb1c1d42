// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tessel/record.h"

/// Adds --record FILE.
void AddRecordOption(CLI::App& command, std::string& file);

/// The recording of what a command does; none when its file is "".
class CommandRecording {
 public:
  /// Begins it. Throws CommandError when the file cannot be written, or is one of the command's inputs.
  CommandRecording(const std::string& file, const std::vector<std::string>& inputs,
                   const kalStore::RecordingOptions& options = {});

  /// Ends it. The trace has said when it is not whole.
  /// @param status  the command's exit status
  /// @return `status`; kExitNotUsable when the recording is not whole.
  int End(int status);

 private:
  std::optional<kalStore::Recording> m_recording;
};

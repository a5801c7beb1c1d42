// SPDX-License-Identifier: Apache-2.0
#include "CommandRecording.h"

#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFile.h"

void AddRecordOption(CLI::App& command, std::string& file) {
  SetFile(*command.add_option("--record", file, "Record what happens, for tessel log and its siblings"));
}

CommandRecording::CommandRecording(const std::string& file, const std::vector<std::string>& inputs,
                                   const kalStore::RecordingOptions& options) {
  if (file.empty()) return;
  RefuseUnusableOutput("--record", "a recording", file, inputs);
  const OutputFile writable(file);
  m_recording.emplace(file, options);
}

int CommandRecording::End(int status) {
  if (!m_recording) return status;
  const bool isWhole = m_recording->Flush() == kalStore::kResultOk;
  m_recording.reset();
  return isWhole ? status : kExitNotUsable;
}

// SPDX-License-Identifier: Apache-2.0
#include "CommandRecording.h"

#include <sys/stat.h>
#include <unistd.h>

#include "CommandError.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFile.h"
#include "Printable.h"

namespace {

// The library refuses a pipe likewise, but later. What is printed would be in the middle of a recording that
// is standard output; a device takes both.
void RefuseUnusableRecording(const std::string& file) {
  struct stat status{}, output{};
  if (::stat(file.c_str(), &status) != 0 || S_ISCHR(status.st_mode)) return;
  if (!S_ISREG(status.st_mode))
    throw CommandError(Printable(file) + ": cannot be written: it is no regular file");
  if (::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == status.st_dev &&
      output.st_ino == status.st_ino)
    throw UsageError("--record " + Quoted(file) + ": is standard output");
}

}  // namespace

void AddRecordOption(CLI::App& command, std::string& file) {
  SetFile(*command.add_option("--record", file, "Record what happens, for tessel log and its siblings"));
}

CommandRecording::CommandRecording(const std::string& file, const std::vector<std::string>& inputs,
                                   const kalStore::RecordingOptions& options) {
  if (file.empty()) return;
  RefuseUnusableOutput("--record", "a recording", file, inputs);
  RefuseUnusableRecording(file);
  const OutputFile writable(file);
  m_recording.emplace(file, options);
}

int CommandRecording::End(int status) {
  if (!m_recording) return status;
  const bool isWhole = m_recording->Flush() == kalStore::kResultOk;
  m_recording.reset();
  return isWhole ? status : kExitNotUsable;
}

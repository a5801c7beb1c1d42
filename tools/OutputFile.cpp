// SPDX-License-Identifier: Apache-2.0
#include "OutputFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "CommandError.h"
#include "Printable.h"
#include "TextFile.h"

namespace {

CommandError Unwritable(const std::string& file) {
  return CommandError(Printable(file) + ": cannot be written: " + std::generic_category().message(errno));
}

}  // namespace

// A pipe is opened once only, to write: its reader would take the end of another look for the end of it all.
OutputFile::OutputFile(std::string file) : m_file(std::move(file)) {
  std::error_code none;
  if (std::filesystem::is_fifo(m_file, none)) {
    if (::access(m_file.c_str(), W_OK) != 0) throw Unwritable(m_file);
    return;
  }
  std::FILE* const stream = std::fopen(m_file.c_str(), "abe");
  if (stream == nullptr) throw Unwritable(m_file);
  std::fclose(stream);
}

void OutputFile::Write(std::string_view text) const {
  write(text, "wbe");
}

void OutputFile::Append(std::string_view text) const {
  write(text, "abe");
}

void OutputFile::write(std::string_view text, const char* mode) const {
  std::FILE* const stream = std::fopen(m_file.c_str(), mode);
  if (stream == nullptr) throw Unwritable(m_file);
  const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  if (std::fclose(stream) != 0 || !isWritten) throw Unwritable(m_file);
}

void RefuseUnusableOutput(const std::string& option, const std::string& what, const std::string& file,
                          const std::vector<std::string>& documents) {
  if (file == kStandardInput) throw UsageError(option + " -: " + what + " needs a file of its own");
  for (const std::string& document : documents) {
    std::error_code isNoFile;
    if (std::filesystem::equivalent(file, document, isNoFile)) {
      throw UsageError(option + " " + Quoted(file) + ": is a document that is read");
    }
  }
}

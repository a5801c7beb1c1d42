#include "TextFile.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <system_error>

#include "Colour.h"
#include "CommandError.h"
#include "Printable.h"
#include "Progress.h"

namespace {

struct CloseUnlessStandard {
  void operator()(std::FILE* stream) const {
    if (stream != stdin) std::fclose(stream);
  }
};

CommandError Unreadable(const std::string& file) {
  return CommandError(FileTitle(file) + ": cannot be read: " + std::generic_category().message(errno));
}

}  // namespace

std::string FileName(const std::string& file) {
  return file == kStandardInput ? "<stdin>" : file;
}

std::string FileTitle(const std::string& file) {
  return Printable(FileName(file));
}

void RefuseRepeatedInput(const std::vector<std::string>& files, const std::vector<std::string>& others) {
  if (std::ranges::count(files, kStandardInput) + std::ranges::count(others, kStandardInput) > 1) {
    throw UsageError("standard input can be read once only");
  }
}

std::string ReadFile(const std::string& file) {
  std::optional<Progress> progress;  // Not while somebody types.
  if (file != kStandardInput || !IsTerminal(STDIN_FILENO)) progress.emplace("reading " + FileTitle(file));
  const std::unique_ptr<std::FILE, CloseUnlessStandard> stream(
      file == kStandardInput ? stdin : std::fopen(file.c_str(), "rbe"));
  if (stream == nullptr) throw Unreadable(file);
  std::string text;
  std::array<char, 65536> chunk;
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stream.get())) {
    text.append(chunk.data(), count);
  }
  if (std::ferror(stream.get()) != 0) throw Unreadable(file);
  return text;
}

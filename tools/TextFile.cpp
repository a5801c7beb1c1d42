#include "TextFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "CommandError.h"
#include "Printable.h"

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

std::string FileTitle(const std::string& file) {
  return file == kStandardInput ? "<stdin>" : Printable(file);
}

std::string ReadFile(const std::string& file) {
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

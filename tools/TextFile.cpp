// SPDX-License-Identifier: Apache-2.0
#include "TextFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>
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

constexpr std::size_t kMostBytes = std::size_t{1} << 30;

CommandError Unreadable(const std::string& file, const std::string& reason) {
  return CommandError(FileTitle(file) + ": cannot be read: " + reason);
}

CommandError Unreadable(const std::string& file) {
  return Unreadable(file, std::generic_category().message(errno));
}

// Known beforehand of a file on a disk, so that nothing is read in vain; a device or a pipe has size 0.
std::size_t SizeOf(std::FILE* stream) {
  struct stat status{};
  return ::fstat(::fileno(stream), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

std::string ReadAll(const std::string& file, std::FILE* stream) {
  std::string text;
  std::array<char, 65536> chunk;
  for (std::size_t size = SizeOf(stream); size <= kMostBytes; size = text.size()) {
    if (std::feof(stream) != 0) return text;  // A terminal would have to end it twice.
    const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stream);
    if (std::ferror(stream) != 0) throw Unreadable(file);
    text.append(chunk.data(), count);
  }
  throw Unreadable(file, "more than 1 GiB");
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

void RefuseToReadAgain(const std::string& file, const std::string& why) {
  if (file == kStandardInput) throw UsageError("FILE: " + why + ", which standard input cannot be");
  struct stat status{};
  if (::stat(file.c_str(), &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) return;
  throw UsageError("FILE: " + why + ", which a pipe or a device cannot be");
}

std::string ReadFile(const std::string& file) {
  std::optional<Progress> progress;  // Not while somebody types.
  if (file != kStandardInput || !IsTerminal(STDIN_FILENO)) progress.emplace("reading " + FileTitle(file));
  const std::unique_ptr<std::FILE, CloseUnlessStandard> stream(
      file == kStandardInput ? stdin : std::fopen(file.c_str(), "rbe"));
  if (stream == nullptr) throw Unreadable(file);
  try {
    return ReadAll(file, stream.get());
  } catch (const std::bad_alloc&) {
    throw Unreadable(file, "not enough memory");
  }
}

std::string ForeignFormat(std::string_view text) {
  using namespace std::string_view_literals;
  if (text.find_first_not_of(" \t\n\v\f\r\0"sv) == text.npos) return "the file is empty";
  if (text.starts_with(R"({"type":"recording",)"))
    return "is a recording: tessel dump makes a settings document of a moment";
  if (text.starts_with("\xEF\xBB\xBF")) return "begins with a byte order mark: save it as UTF-8 without one";
  // The mark, or an ASCII character and the zero bytes beside it.
  const bool isUtf32 =
      text.starts_with("\xFF\xFE\0\0"sv) || text.starts_with("\0\0"sv) || text.substr(1, 3) == "\0\0\0"sv;
  if (isUtf32) return "is in UTF-32: save it as UTF-8";
  const bool isUtf16 = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") || text[0] == '\0' ||
                       text.substr(1, 1) == "\0"sv;
  return isUtf16 ? "is in UTF-16: save it as UTF-8" : "";
}

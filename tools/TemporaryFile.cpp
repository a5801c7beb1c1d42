// SPDX-License-Identifier: Apache-2.0
#include "TemporaryFile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "CommandError.h"
#include "Printable.h"

namespace {

[[noreturn]] void ThrowNoFolder(const std::string& folder, const std::error_code& reason) {
  throw CommandError(Printable(folder) + ": no temporary file can be made: " + reason.message());
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& name) {
  std::error_code fault;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(fault);
  if (fault) ThrowNoFolder("TMPDIR", fault);
  m_folder = parent / "tessel-XXXXXX";
  if (::mkdtemp(m_folder.data()) == nullptr) ThrowNoFolder(parent, {errno, std::generic_category()});
  m_path = m_folder + "/" + name;
}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// A file in a folder of its own, among the system's temporary files. Both go with the object.
class TemporaryFile {
 public:
  /// Makes the folder; the file is made by whoever writes it. Throws CommandError with the system's reason.
  explicit TemporaryFile(const std::string& name);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  std::string m_folder;
  std::string m_path;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kalStore::internal {

/// The file that a recording is written to, or its set of files: when one is full, it gets the number of its
/// part behind its name, and the next one takes its place. The operations throw RecordingFault when the
/// system refuses.
class RecordingOutput {
 public:
  /// @param largest  of a file, in bytes; 0: no limit
  /// @param files  how many there are at most
  RecordingOutput(std::string file, std::uint64_t largest, std::size_t files);
  RecordingOutput(const RecordingOutput&) = delete;
  RecordingOutput& operator=(const RecordingOutput&) = delete;
  ~RecordingOutput();

  /// Empties the file, or makes it. Refuses one that another recording writes.
  void Open();
  /// Closes the file, names it after its part, removes the oldest one, and opens the next.
  void Rotate();
  /// Writes whole lines. Of lines that do not fit, those at the beginning may be there.
  void Write(std::string_view lines);
  /// Closes the file, which another recording may write then.
  void Close();
  /// Refuses a file that somebody has removed.
  void CheckIsThere() const;

  const std::string& File() const { return m_file; }
  std::uint64_t Part() const { return m_part; }
  bool IsRotated() const { return m_files > 1; }
  /// Whether there is room for so many bytes more.
  bool HasRoom(std::size_t bytes) const { return m_largest == 0 || m_size + bytes <= m_largest; }

 private:
  std::string nameOf(std::uint64_t part) const;

  const std::string m_file;
  const std::uint64_t m_largest;
  const std::size_t m_files;
  int m_descriptor = -1;
  std::uint64_t m_size = 0;
  std::uint64_t m_part = 1;
};

}  // namespace kalStore::internal

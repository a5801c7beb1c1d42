// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kalStore::internal {

/// The file that a recording is written to, or its set of files: when one is full, it gets the number of its
/// part behind its name, and the next one takes its place. The operations throw RecordingFault when the
/// system refuses, and std::bad_alloc; the file can still be written then.
class RecordingOutput {
 public:
  /// @param largest  of a file, in bytes; 0: no limit
  /// @param files  how many there are at most
  RecordingOutput(std::string file, std::uint64_t largest, std::size_t files);
  RecordingOutput(const RecordingOutput&) = delete;
  RecordingOutput& operator=(const RecordingOutput&) = delete;
  ~RecordingOutput();

  /// Empties the file, or makes it, and removes the other parts of an earlier set. Refuses a file that
  /// another recording writes.
  void Open();
  /// Writes whole lines: all of them, or none.
  void Write(std::string_view lines) { write(m_current, lines); }
  /// Goes on in the next file: the full one is named after its part, and the oldest one removed. When that
  /// fails, the full file still has its name.
  /// @param end  the last lines of the full file
  /// @param begin  the first lines of the next one
  void Rotate(std::string_view end, std::string_view begin);
  /// Closes the file, which another recording may write then.
  void Close() { close(m_current); }
  /// Refuses a file that somebody has removed.
  void CheckIsThere() const;

  const std::string& File() const { return m_file; }
  std::uint64_t Part() const { return m_part; }
  bool IsRotated() const { return m_files > 1; }
  /// Whether there is room for so many bytes more.
  bool HasRoom(std::size_t bytes) const { return m_largest == 0 || m_current.size + bytes <= m_largest; }

 private:
  struct Opened {
    int descriptor = -1;
    std::uint64_t size = 0;
    bool isDevice = false;
  };

  Opened open(const std::string& file, int flags) const;
  static void write(Opened& opened, std::string_view lines);
  static void close(Opened& opened);
  void removeParts() const;
  std::string nameOf(std::uint64_t part) const;

  std::string m_file;
  std::string m_next;  // The name of the next file until it takes the place of the full one.
  const std::uint64_t m_largest;
  const std::size_t m_files;
  Opened m_current;
  std::uint64_t m_part = 1;
};

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "recording/RecordingEvent.h"

/// The files of a recording, one after the other. The name of a rotated set's last file stands for the set:
/// first comes the oldest one that is there, and while the recording is followed, the next ones as it is
/// rotated, also those that have lost its name meanwhile.
class RecordingParts {
 public:
  /// Opens the file of the name, or the oldest one of its set; standard input for "-". A symbolic link is
  /// followed now, and no more.
  explicit RecordingParts(const std::string& name);

  bool IsOpen() const { return m_stream != nullptr; }
  /// The name of the file that is open.
  const std::string& FileName() const { return m_file; }

  /// Whether it is one of the files, or another one of their set, by whatever name.
  bool Has(const std::string& file) const;
  /// Whether both are files of one set.
  bool IsOfSetOf(const RecordingParts& other) const;
  /// Takes other files of its set in, each at its place, and none twice. To be called before they are read.
  void Join(RecordingParts&& other);

  /// Of the file that is open. A stream would wait until its buffer is full, and remember an end.
  int Descriptor() const { return ::fileno(m_stream.get()); }
  /// Whether the file still has its recording: another one may have emptied it for itself. To be asked after
  /// its bytes were read, before they are used.
  bool IsTheSame() const;

  /// Takes note of where files begin and end. To be called with each event, in their order.
  /// @return A line of type lost that comes before it, for the events of files that were removed before they
  /// were opened; "" without any.
  std::string Take(const RecordingEvent& event);

  enum class Next {
    kNotYet,
    kOpened,  ///< The next file is open, at its beginning.
    kNone,    ///< The file has no next one, or another recording has its name.
  };
  /// Goes on once the file was read to its end.
  Next OpenNext();

 private:
  struct Close {
    void operator()(std::FILE* stream) const {
      if (stream != stdin) std::fclose(stream);
    }
  };
  using Stream = std::unique_ptr<std::FILE, Close>;

  static Stream open(const std::string& name);
  static Stream openRegular(const std::string& name);
  Stream openLast() const;
  void openOldest();
  Next openBehind();
  Stream openPart(std::uint64_t part) const;

  std::string m_name;
  std::string m_file;
  Stream m_stream;
  std::string m_first;       // The wall of the first recording in the file that is open; "" until it is read.
  std::string m_wall;        // Which names the set.
  std::uint64_t m_part = 0;  // 0: of no set.
  std::uint64_t m_next = 0;  // The number of the event that comes next; 0: not known.
  std::uint64_t m_oldest = 0;  // The first part that was there, and the last one; 0: of no set.
  std::uint64_t m_latest = 0;
  bool m_isFull = false;
  // The names of others that were joined, by their first parts.
  std::map<std::uint64_t, std::string> m_others;
};

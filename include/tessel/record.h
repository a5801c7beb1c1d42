// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Recordings: a file of what happens in the process, written while it happens, for `tessel log` and its
/// siblings. In a library of its own, libtessel_record.so (CMake tessel::record, pkg-config tessel-record): a
/// process that records nothing does not load it.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// #include <tessel/record.h>
/// Recording recording("one_call.tessel");
/// CallStore store(7, CallStore::kEndsCall);
/// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
/// assert(recording.Flush() == kResultOk);
/// assert(std::remove("one_call.tessel") == 0);
/// @endcode

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tessel/KalConfigGroup.h"
#include "tessel/ResultCode.h"
#include "tessel/export.h"

namespace kalStore {

namespace internal {
class RecordingRun;
}

/// What a recording shows of a setting.
enum class RecordingShows : std::uint8_t {
  kAll,      ///< its name and its values
  kName,     ///< its name alone, not its values, nor what its callbacks threw
  kNothing,  ///< none of them: that there was something in its group
};

/// Decides what a recording shows of a setting, for secrets. Asked for each event of the setting, with its
/// group and name; a name that is longer than kJournalLongestValue may come whole, or with its beginning
/// alone. Runs on the recording's thread: it must not wait for a thread that waits for the recording, for
/// example for a lock that is held in Recording::Flush(). When it throws, nothing is shown.
using RecordingFilter =
    std::function<RecordingShows(std::uint32_t callId, KalConfigGroup group, std::string_view name)>;

/// What can be chosen of a recording.
struct RecordingOptions {
  /// How many events of the journal it has room for between two looks at it, a tenth of a second or less.
  /// What comes too quickly is missed, and counted. A journal that is on already stays as it is. At most
  /// kJournalLargestCapacity.
  std::size_t journalCapacity = 16384;
  /// How often the statistics objects are looked at; 0: only for the picture at the beginning of a file.
  std::chrono::milliseconds statisticsInterval{1000};
  /// The largest size of a file, in bytes; 0: no limit. A file's picture of what was there when it began may
  /// be larger.
  std::uint64_t largestFile = 0;
  /// How many files of this size there are. With one, the recording ends when it is full. With more, a full
  /// file gets the number of its part behind its name (call.tessel.1), the oldest one is removed, and the
  /// recording goes on under its name.
  std::size_t files = 1;
  RecordingFilter filter{};  ///< none: everything is shown
};

/// Records what happens in the process to settings, subscriptions, stores and statistics objects, until the
/// end of the scope. The guide on recordings describes the file.
///
/// The journal is on meanwhile, see StartJournal(): it is turned on, and with the last recording off again,
/// unless it was on before. Somebody else who stops it ends the recording. Settings, results, orders, trace
/// lines and the intervals of statistics are the same as without a recording.
///
/// A thread of the recording's own copies the journal and writes the file, ten times in a second or more
/// often: what a crash leaves is complete up to then. No other thread ever waits for the file, but in Flush()
/// and the destructor. When the file can no longer be written (the disk is full, the file was removed, it has
/// reached its largest size), the recording ends: with one trace line of level 0, and where there is room
/// with the reason in the file's last line.
///
/// There may be several recordings at once, each of another file.
///
/// @threads Any operation, from any thread, also in callbacks. In the filter, and in a trace sink on the
/// recording's thread, nothing waits.
/// @lifetime After fork() it belongs to the parent alone: in the child it does nothing, also at its end.
/// @par Example
/// @code{.cpp}
/// #include <tessel/record.h>
/// #include <fstream>
/// const auto hidePasswords = [](std::uint32_t, KalConfigGroup, std::string_view name) {
///   return name == "Password" ? RecordingShows::kName : RecordingShows::kAll;
/// };
/// {
///   Recording recording("call.tessel", {.filter = hidePasswords});
///   CallStore store(7, CallStore::kEndsCall);
///   store->SetKalConfig(KAL_CONFIG_GROUP_COMMON, "Password", "secret", false, false);
/// }
/// std::string line, lines;
/// for (std::ifstream file("call.tessel"); std::getline(file, line);) lines += line + '\n';
/// assert(lines.find("\"name\":\"Password\",\"hidden\":[\"new\"]") != std::string::npos);
/// assert(lines.find("secret") == std::string::npos);
/// assert(std::remove("call.tessel") == 0);
/// @endcode
class TESSEL_API Recording {
 public:
  /// Begins the recording: turns the journal on, and copies what is there for the picture at the beginning of
  /// the file. Throws std::bad_alloc, with nothing changed. A file that cannot be written ends the recording
  /// soon; Flush() says so.
  /// @param file  its path; a file that is there is replaced, with the other files of its set
  /// @param options  may be left out
  [[nodiscard]] explicit Recording(std::string file, RecordingOptions options = {});
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;
  /// Ends the recording. Waits until everything that happened before is in the file.
  ///
  /// Where its thread waits for a lock in vain, for three seconds, the file is left to end soon after, with
  /// the reason in its last line: the caller holds the lock. What a callback captured ends with its store
  /// under the stores' lock, trace lines of statistics objects ("CKalTessel::") are written under theirs, and
  /// the static objects of a shared object begin and end under the loader's.
  ~Recording();

  /// Waits until everything that happened before is in the file; the statistics as they are now, too. An
  /// event that another thread has begun to write, and does not finish, is waited for a second at least, and
  /// then left out.
  /// @return kResultOk; kResultNotFound when the recording has ended, on its own thread, and where the
  /// destructor would give up, too.
  std::int32_t Flush();
  /// @return Whether the recording goes on.
  bool IsOn() const;

 private:
  const std::shared_ptr<internal::RecordingRun> m_run;
};

}  // namespace kalStore

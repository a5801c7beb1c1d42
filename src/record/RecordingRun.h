// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "record/CutValues.h"
#include "record/EventLines.h"
#include "record/JournalUse.h"
#include "record/LineBuffer.h"
#include "record/Lock.h"
#include "record/LongWait.h"
#include "record/Picture.h"
#include "record/RecordingOutput.h"
#include "record/StatisticsChanges.h"
#include "tessel/journal.h"
#include "tessel/locking.h"
#include "tessel/record.h"

namespace kalStore::internal {

/// A recording, and the thread that writes it. The thread works in rounds: it copies what is new in the
/// journal, adds what changed in the statistics when that is due, and writes all of it to the file.
///
/// Shared by its handle and its thread: the handle may end on that thread, in a filter or a trace sink.
/// Nothing is called, and nothing is written, with the lock held.
class RecordingRun {
 public:
  /// Turns the journal on and takes the first picture. Throws std::bad_alloc.
  RecordingRun(std::string file, RecordingOptions options);
  RecordingRun(const RecordingRun&) = delete;
  RecordingRun& operator=(const RecordingRun&) = delete;

  /// Starts the thread. Where there is none to be had, the recording ends at once.
  static void Start(const std::shared_ptr<RecordingRun>& run);
  /// Ends the recording, and waits until its file is whole; not on its own thread, nor in vain.
  void End();

  std::int32_t Flush();
  bool IsOn();

 private:
  using Clock = std::chrono::steady_clock;
  using Nanoseconds = std::chrono::nanoseconds;

  // What other threads ask for.
  struct Request {
    std::uint64_t flush;  // The last flush that was asked for.
    bool isEnd;
  };

  // The thread's.
  void run() noexcept;
  void record();
  Request nextRequest();
  void answer(std::uint64_t flush);
  void round(bool isAsked);
  void takeEvents(bool isAsked);
  void take(const JournalEvent& event);
  void takeCutValues();
  void takeStatistics();
  bool isFull() const;
  void add();
  void write();
  void beginNextPart();
  void appendBegin(LineBuffer& out, const Picture& picture, std::uint64_t part);
  void appendEnd(LineBuffer& out, const char* reason, std::int64_t timeNs) const;
  void appendLost(LineBuffer& out) const;

  void endAtFault(const char* reason) noexcept;
  void endBy(const char* reason) noexcept;
  // Whether this is another process, which has no such thread.
  bool isForked() const;
  void waitFor(Lock& lock, std::uint64_t flush) TESSEL_LOCKING(requires_capability(m_mutex));
  bool isOwnThread() const { return m_writer.load(std::memory_order_relaxed) == std::this_thread::get_id(); }
  std::int64_t sinceStart() const { return Nanoseconds(Clock::now() - m_start).count(); }

  RecordingOptions m_options;
  const Clock::time_point m_start = Clock::now();
  const std::int64_t m_startNs = Nanoseconds(m_start.time_since_epoch()).count();
  const std::string m_wall;  // The time of day then.
  const ::pid_t m_process;

  // The thread's alone, once it runs.
  std::optional<JournalUse> m_journal;
  const std::uint64_t m_journalStarts;  // Another start than this one ends the recording.
  std::uint64_t m_next;                 // The number that is read next, unless it is missed.
  std::uint64_t m_written;              // What was read before it is in the file.
  std::uint64_t m_end;                  // Where the last round's events end.
  JournalReader m_reader;
  std::optional<Picture> m_firstPicture;
  LongWait m_lockWait;
  EventLines m_lines;
  CutValues m_cutValues;
  Clock::time_point m_cutValuesDue = m_start;
  StatisticsChanges m_statistics;
  RecordingOutput m_output;
  LineBuffer m_pending;       // Lines that are not written yet, and behind them those that are being added.
  std::size_t m_added = 0;    // The size of the first.
  std::int64_t m_lastNs = 0;  // The time of the newest line, and of a part that begins after it.
  bool m_isPartNew = true;    // Whether the file has its picture alone.
  Clock::duration m_pause{};  // Until the next round that nobody asks for.
  Clock::time_point m_roundEnd = m_start;
  const std::chrono::milliseconds m_statisticsInterval;
  Clock::time_point m_statisticsDue;

  // The handle's alone.
  std::thread m_thread;
  // Written by the thread when it begins, read by whoever asks whether it is that one. Relaxed: only to that
  // one does it matter.
  std::atomic<std::thread::id> m_writer;

  detail::Mutex<std::mutex> m_mutex;
  std::condition_variable m_asked;
  std::condition_variable m_answered;
  std::uint64_t m_flushesAsked TESSEL_LOCKING(guarded_by(m_mutex)) = 0;
  std::uint64_t m_flushesDone TESSEL_LOCKING(guarded_by(m_mutex)) = 0;
  bool m_isEnding TESSEL_LOCKING(guarded_by(m_mutex)) = false;
  bool m_isOver TESSEL_LOCKING(guarded_by(m_mutex)) = false;
};

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingRun.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "record/LineText.h"
#include "record/RecordingFault.h"
#include "record/RecordingPause.h"
#include "tessel/trace.h"
#include "util/CCmTextFormator.h"
#include "util/util_trace.h"

namespace kalStore::internal {

namespace {

using namespace std::chrono_literals;

constexpr unsigned int kVersion = 1;
// A time that the clock can have.
constexpr auto kLongestInterval = std::chrono::hours(24 * 365);
// A round that somebody waits for waits itself for an event that its writer has not finished, so many times.
constexpr int kMostWaits = 1000;
// How much is written at a time at least, where there is more.
constexpr std::size_t kChunk = std::size_t{64} << 10;
// The settings of a call are read for the values that the journal has cut, and the journal is looked through
// for each call: for at most one part in so many of the time.
constexpr int kCutValuesRest = 100;
// Left in a file with a limit, for its last lines.
constexpr std::size_t kEndRoom = 256;

// "2026-11-22T08:42:05.123456Z"
std::string WallTime() {
  const auto now = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
  const std::time_t seconds =
      std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(now));
  const auto microseconds = now.time_since_epoch().count() % 1000000;
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char text[64];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + size, sizeof text - size, ".%06dZ", static_cast<int>(microseconds));
  return text;
}

// The process may change its folder, before the file is opened or when the next one takes its place.
std::string AbsolutePath(std::string file) {
  std::error_code fault;
  const std::filesystem::path path = std::filesystem::absolute(file, fault);
  return fault ? file : path.string();
}

// Threads that are started meanwhile have no signal delivered: the handlers are the engine's, and the one of
// a file that has reached the process's limit would end it. Only those of a crash are: what reports crashes
// would miss one in a filter.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    ::sigfillset(&blocked);
    for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP})
      ::sigdelset(&blocked, signal);
    ::pthread_sigmask(SIG_SETMASK, &blocked, &m_before);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

 private:
  sigset_t m_before{};
};

}  // namespace

// The journal comes first, then the number, then the picture: what changes after the picture has that number
// or a later one. What changes between the two is in both, and following the lines gives the same end.
RecordingRun::RecordingRun(std::string file, RecordingOptions options)
    : m_options(std::move(options)),
      m_wall(WallTime()),
      m_process(::getpid()),
      m_journal(std::in_place, m_options.journalCapacity),
      m_journalStarts(JournalStarts()),
      m_next(NextJournalNumber()),
      m_written(m_next),
      m_end(m_next),
      m_reader(m_next),
      m_firstPicture(std::in_place),
      m_lines(m_startNs, m_options.filter, m_lockWait),
      m_output(AbsolutePath(std::move(file)), m_options.largestFile, m_options.files),
      m_statisticsInterval(
          std::clamp<std::chrono::milliseconds>(m_options.statisticsInterval, 0ms, kLongestInterval)),
      m_statisticsDue(m_start + m_statisticsInterval) {
  m_pending.Room(kChunk);  // The last lines need no memory, then.
}

void RecordingRun::Start(const std::shared_ptr<RecordingRun>& run) {
  const SignalsBlocked blocked;
  try {
    run->m_thread = std::thread([run] { run->run(); });
  } catch (const std::system_error& fault) {
    run->endBy(fault.what());
  }
}

void RecordingRun::End() {
  if (!m_thread.joinable()) return;
  if (isForked()) return m_thread.detach();
  {
    Lock lock(m_mutex);
    m_isEnding = true;
    m_asked.notify_one();
    if (isOwnThread()) return m_thread.detach();
    while (!m_isOver) {
      waitFor(lock, std::numeric_limits<std::uint64_t>::max());
      if (m_isOver || !m_lockWait.GiveUp()) continue;
      m_options.filter = nullptr;  // It is called no more: its code and captures may end now.
      return m_thread.detach();
    }
  }
  m_thread.join();
}

std::int32_t RecordingRun::Flush() {
  if (isForked() || isOwnThread()) return kResultNotFound;
  Lock lock(m_mutex);
  const std::uint64_t flush = ++m_flushesAsked;
  m_asked.notify_one();
  waitFor(lock, flush);
  return m_flushesDone < flush ? kResultNotFound : kResultOk;
}

// Until the flush is done, or the recording over; or until the thread waits in vain.
void RecordingRun::waitFor(Lock& lock, std::uint64_t flush) {
  const Clock::time_point begin = Clock::now();
  while (m_flushesDone < flush && !m_isOver && !m_lockWait.IsInVain(begin))
    lock.WaitUntil(m_answered, Clock::now() + kMostPause);
}

bool RecordingRun::isForked() const {
  return ::getpid() != m_process;
}

bool RecordingRun::IsOn() {
  if (isForked()) return false;
  const Lock lock(m_mutex);
  return !m_isOver;
}

void RecordingRun::run() noexcept {
  m_writer.store(std::this_thread::get_id(), std::memory_order_relaxed);
  ::pthread_setname_np(::pthread_self(), "tessel-record");
  try {
    record();
    endBy(nullptr);
  } catch (const std::exception& fault) {
    endAtFault(fault.what());
    endBy(fault.what());
  }
}

// Whole lines that could not be added or written before may have room now; what has none is counted.
void RecordingRun::endAtFault(const char* reason) noexcept {
  m_pending.Cut(m_added);
  try {
    write();
  } catch (const std::exception&) {
    m_pending.Clear();
  }
  try {
    m_end = NextJournalNumber();
    appendLost(m_pending);
    appendEnd(m_pending, reason, sinceStart());
    write();
  } catch (const std::exception&) {
    // The trace line says it.
  }
}

void RecordingRun::record() {
  m_output.Open();
  appendBegin(m_pending, *m_firstPicture, m_output.Part());
  write();
  m_firstPicture.reset();
  for (;;) {
    const Request request = nextRequest();
    const bool wasStopped = !IsJournalOn() || JournalStarts() != m_journalStarts;
    round(request.isEnd || request.flush != 0 || wasStopped);
    if (wasStopped) throw RecordingFault("the journal was stopped");
    if (request.isEnd) break;
    answer(request.flush);
  }
  appendLost(m_pending);
  appendEnd(m_pending, nullptr, sinceStart());
  write();
  const Lock lock(m_mutex);
  m_flushesDone = m_flushesAsked;
}

RecordingRun::Request RecordingRun::nextRequest() {
  const Clock::time_point end = Clock::now() + m_pause;
  Lock lock(m_mutex);
  while (!m_isEnding && m_flushesAsked == m_flushesDone && lock.WaitUntil(m_asked, end)) {
  }
  return {m_flushesAsked == m_flushesDone ? 0 : m_flushesAsked, m_isEnding};
}

void RecordingRun::answer(std::uint64_t flush) {
  if (flush == 0) return;
  const Lock lock(m_mutex);
  m_flushesDone = flush;
  m_answered.notify_all();
}

void RecordingRun::round(bool isAsked) {
  m_lines.ForgetCode();
  takeEvents(isAsked);
  if (!m_cutValues.IsEmpty() && (isAsked || Clock::now() >= m_cutValuesDue)) takeCutValues();
  if (m_statisticsInterval.count() > 0 && (isAsked || Clock::now() >= m_statisticsDue)) takeStatistics();
  write();
  m_output.CheckIsThere();
}

// Up to what there is now: writers may be as quick as this thread.
void RecordingRun::takeEvents(bool isAsked) {
  const std::uint64_t begin = m_next;
  m_end = NextJournalNumber();
  JournalEvent event;
  for (int waits = 0;; ++waits) {
    while (m_next < m_end && m_reader.Next(event)) take(event);
    if (m_next + m_reader.Missed() >= m_end || !isAsked || waits == kMostWaits) break;
    std::this_thread::sleep_for(kLeastPause);
  }
  const Clock::time_point now = Clock::now();
  m_pause = PauseAfter(now - std::exchange(m_roundEnd, now), m_next - begin, JournalCapacity());
}

// An object's members come after the line that it was made, also when a part's picture before that has them.
void RecordingRun::take(const JournalEvent& event) {
  m_cutValues.Take(event, m_lines);
  m_lines.Append(m_pending, event);
  add();
  if (event.kind == JournalKind::kStatisticsMade) m_statistics.Forget(event.entityType, event.callId);
  m_next = event.number + 1;
  m_lastNs = std::max(m_lastNs, event.timeNs - m_startNs);
  if (m_pending.Size() >= kChunk) write();
}

void RecordingRun::takeCutValues() {
  const Clock::time_point begin = Clock::now();
  auto settings = m_lockWait.Run([&] { return m_cutValues.Read(); });
  m_cutValues.Append(m_pending, m_startNs, settings, m_reader, m_next);
  add();
  m_cutValuesDue = begin + kCutValuesRest * (Clock::now() - begin);
}

// Where there is no room for the lines, the next part's picture has what they say, or what is newer.
void RecordingRun::takeStatistics() {
  m_statisticsDue = Clock::now() + m_statisticsInterval;
  const std::vector<StatisticsCopy> copies = m_lockWait.Run(&CopyStatistics);
  const std::int64_t nowNs = sinceStart();
  m_statistics.Append(m_pending, nowNs, copies);
  if (m_pending.Size() == m_added) return;
  m_lastNs = std::max(m_lastNs, nowNs);
  if (!isFull()) return add();
  m_pending.Cut(m_added);
  beginNextPart();
}

// The file's picture is followed by some lines in any case: a full one would be the last.
bool RecordingRun::isFull() const {
  return !m_isPartNew && !m_output.HasRoom(m_pending.Size() + kEndRoom);
}

// The lines that were appended.
void RecordingRun::add() {
  if (m_pending.Size() == m_added) return;
  if (isFull()) {
    const std::string lines(m_pending.Text().substr(m_added));
    m_pending.Cut(m_added);
    beginNextPart();
    m_pending += lines;
  }
  m_added = m_pending.Size();
  m_isPartNew = false;
}

void RecordingRun::write() {
  m_output.Write(m_pending.Text());
  m_pending.Clear();
  m_added = 0;
  m_written = m_next;
}

void RecordingRun::beginNextPart() {
  if (!m_output.IsRotated()) throw RecordingFault("it has reached its largest size");
  LineBuffer begin;
  appendBegin(begin, m_lockWait.Run([] { return Picture(); }), m_output.Part() + 1);
  LineBuffer end;
  appendEnd(end, "goes on in the next file", m_lastNs);
  write();
  m_output.Rotate(end.Text(), begin.Text());
  m_isPartNew = true;
}

void RecordingRun::appendBegin(LineBuffer& out, const Picture& picture, std::uint64_t part) {
  LineText line(out, "recording", m_lastNs);
  line.Number("version", kVersion).Word("wall", m_wall).Number("next", m_next);
  if (m_output.IsRotated()) line.Number("part", part);
  line.End();
  picture.Append(out, m_lastNs, m_lines, m_statistics);
}

void RecordingRun::appendEnd(LineBuffer& out, const char* reason, std::int64_t timeNs) const {
  LineText line(out, "recording", timeNs);
  line.Number("next", m_next).Word("event", "ended");
  if (reason != nullptr) line.String("reason", reason);
  line.End();
}

// What was missed last, or is left out since its writer does not finish; or could not be written.
void RecordingRun::appendLost(LineBuffer& out) const {
  if (m_written < m_end) m_lines.AppendLost(out, sinceStart(), m_end - m_written);
}

void RecordingRun::endBy(const char* reason) noexcept {
  m_output.Close();
  m_journal.reset();
  {
    const Lock lock(m_mutex);
    m_isOver = true;
    m_answered.notify_all();
  }
  if (reason == nullptr || get_external_trace_mask() < 0) return;
  char buffer[1024];
  CCmTextFormator text(buffer, sizeof buffer);
  text << "kalStore::Recording, ended, file=" << m_output.File() << ", reason=" << reason;
  util_adapter_trace(0, GetCurrentModuleName(nullptr), text, text.tell());
}

}  // namespace kalStore::internal

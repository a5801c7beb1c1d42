// SPDX-License-Identifier: Apache-2.0
#include "SimulateCommand.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "CommandError.h"
#include "CommandRecording.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "TemporaryFile.h"
#include "recording/RecordingFile.h"
#include "report/Page.h"
#include "report/RecordingsPage.h"
#include "simulate/Simulation.h"
#include "simulate/Summary.h"

namespace {

using simulate::Simulation;
using simulate::SimulationPlan;

// As many threads as a machine starts without complaint.
constexpr unsigned kMaxComponents = 1000;
constexpr unsigned kMaxCalls = kMaxComponents / simulate::Call::kOwnComponents;
constexpr double kLeastSeconds = 0.05;
constexpr double kMostSeconds = 86400;

struct SimulateOptions {
  SimulationPlan plan;
  std::vector<std::string> settings;
  std::string report;
  std::string recording;
  bool json = false;
};

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

// While it lives, the first signal that asks the program to end asks the run to end; the second one is
// obeyed.
class Interruption {
 public:
  Interruption() {
    struct sigaction action{};
    action.sa_handler = [](int) { interrupted = true; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, &m_interrupt);
    ::sigaction(SIGTERM, &action, &m_terminate);
  }
  ~Interruption() {
    ::sigaction(SIGINT, &m_interrupt, nullptr);
    ::sigaction(SIGTERM, &m_terminate, nullptr);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

 private:
  struct sigaction m_interrupt{};
  struct sigaction m_terminate{};
};

// The plots of a short run need more than a value in each second.
std::chrono::milliseconds StatisticsInterval(double plannedSeconds) {
  using namespace std::chrono_literals;
  return std::clamp(duration_cast<std::chrono::milliseconds>(plannedSeconds / 300 * 1s), 100ms, 1000ms);
}

// The report is made of the recording, which is read again.
void RefuseRecordingForReport(const std::string& report, const std::string& recording) {
  namespace fs = std::filesystem;
  std::error_code isNoFile;
  if (fs::path(report).lexically_normal() == fs::path(recording).lexically_normal() ||
      fs::equivalent(report, recording, isNoFile)) {
    throw UsageError("--report " + Quoted(report) + ": is the recording");
  }
  if (fs::exists(recording, isNoFile) && !fs::is_regular_file(recording, isNoFile)) {
    throw UsageError("--record " + Quoted(recording) + ": is no regular file, which a report is made of");
  }
}

int Simulate(SimulateOptions& options) {
  SimulationPlan& plan = options.plan;
  if (plan.calls * (simulate::Call::kOwnComponents + plan.listeners) > kMaxComponents) {
    throw UsageError("--calls and --components: more than " + std::to_string(kMaxComponents) +
                     " components in all");
  }
  const bool hasReport = !options.report.empty();
  if (hasReport) {
    RefuseUnusableOutput("--report", "a report", options.report, options.settings);
    if (!options.recording.empty()) RefuseRecordingForReport(options.report, options.recording);
    RequirePage();
  }
  const Interruption interruption;
  plan.documents = LoadDocuments(options.settings);
  for (const SettingsDocument& document : plan.documents) document.PrintFindings(std::cerr);
  std::optional<TemporaryFile> temporary;
  if (hasReport && options.recording.empty()) {
    options.recording = temporary.emplace("simulation.tessel").Path();
  }
  std::optional<OutputFile> page;
  if (hasReport) page.emplace(options.report);

  CommandRecording recording(options.recording, options.settings,
                             {.statisticsInterval = StatisticsInterval(plan.seconds)});
  Simulation simulation(plan);
  {
    const Progress progress("simulating");
    simulation.Run(interrupted);
  }
  int status = recording.End(simulation.IsSound() ? kExitFine : kExitFindings);
  if (page) {
    RecordingFile recorded(options.recording);
    if (!WriteRecordingsPage({&recorded, 1}, *page)) status = kExitNotUsable;
  }
  (options.json ? simulate::PrintSummaryAsJson : simulate::PrintSummary)(std::cout, simulation);
  return status;
}

}  // namespace

void AddSimulateCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App* const command =
      app.add_subcommand("simulate", "Run the calls of a small media engine on the library and measure it");
  const auto number = [&](const char* name, auto& value, const char* description) -> CLI::Option& {
    return *command->add_option(name, value, description)->type_name("N");
  };
  SetRange(number("--seconds", options->plan.seconds, "How long, 0.05 to 86400; 5 by default"), kLeastSeconds,
           kMostSeconds);
  SetRange(number("--calls", options->plan.calls, "How many calls at once; 2 by default"), 1, kMaxCalls);
  SetRange(number("--components", options->plan.listeners,
                  "More components in each call, for load: each is notified of all that is set during the "
                  "call, the first directly, the second posted, the third handed over, and so on"),
           0, kMaxComponents);
  SetFile(*command
               ->add_option("--settings", options->settings,
                            "A settings document; repeatable. The first is applied when the calls start, the "
                            "others arrive during the calls, evenly spread; - is standard input")
               ->allow_extra_args(false));
  SetFile(*command->add_option("--report", options->report,
                               "Write what was recorded as a page, as tessel report does"));
  AddRecordOption(*command, options->recording);
  command->add_flag("--json", options->json, "Print the summary as a JSON object, on one line");
  command->footer(
      "Each call has an audio and a video sender and receiver, a jitter buffer, a bandwidth controller and "
      "a\n"
      "reporter, each with a thread and a settings facade of its own. The call's link gets worse and better; "
      "the\n"
      "controller and the jitter buffer change settings, and the others are notified. Latency is the time "
      "from "
      "the\n"
      "set to the callback; for a document's values, from the import. Ctrl-C ends the run early.\n\n" +
      ExitStatusHelp("done", "done, but a delivery was lost, or a video frame is missing in the statistics") +
      "\n\n"
      "Examples:\n"
      "  tessel simulate --settings base.json --settings low-bandwidth.json --report report.html\n"
      "      What do the two documents do to a call, and what does the library do?\n"
      "  tessel simulate --record call.tessel && tessel report call.tessel -o report.html\n"
      "      The same page; the recording is there for tessel log and its siblings, too.\n"
      "  tessel simulate --seconds 60 --calls 10 --components 20 --json\n"
      "      How long do deliveries take under load?");
  command->callback([options, &exitStatus] { exitStatus = Simulate(*options); });
}

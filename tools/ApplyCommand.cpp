// SPDX-License-Identifier: Apache-2.0
#include "ApplyCommand.h"

#include <charconv>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Change.h"
#include "ChangeReport.h"
#include "Colour.h"
#include "CommandError.h"
#include "CommandRecording.h"
#include "ConfigPath.h"
#include "DumpOutput.h"
#include "ExitStatus.h"
#include "Glob.h"
#include "OptionChecks.h"
#include "Printable.h"
#include "Progress.h"
#include "SettingsDocument.h"
#include "Watcher.h"
#include "tessel/CallStore.h"
#include "tessel/journal.h"
#include "util/util_trace.h"

namespace {

using kalStore::ConfigMultGroup_t;
using kalStore::IKalConfig;

constexpr unsigned kMostTraceLevel = 2;
constexpr std::uint32_t kCallId = 1;

// The options as the command line has them.
struct ApplyOptions {
  std::vector<std::string> files;
  std::vector<std::string> sets;
  std::vector<std::string> watches;
  std::optional<std::string> dump;
  std::optional<unsigned> traceLevel;
  std::string recording;
  bool strict = false;
  bool async = false;
  bool quiet = false;
  bool json = false;
};

SettingsEntry ParseAssignment(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw UsageError("--set " + Quoted(text) + ": expected GROUP/NAME=VALUE");
  ConfigPath path = ParseConfigPath("--set", std::string_view(text).substr(0, equals));
  return {path.group, std::move(path.name), text.substr(equals + 1), true};
}

UsageError NotGroups(const std::string& text, const std::string& why) {
  return UsageError("--dump " + Quoted(text) + ": " + why +
                    "; expected \"all\", names of groups with commas between, or a 32-bit mask, decimal or "
                    "0x and hexadecimal");
}

// "Audio,Video"
ConfigMultGroup_t ParseGroups(const std::string& text) {
  ConfigMultGroup_t mask = 0;
  for (const std::string& name : CLI::detail::split(text + ',', ',')) {
    const kalStore::KalConfigGroup group = kalStore::GroupName2KalConfigGroup(name);
    if (!kalStore::IsConfigGroup(group)) throw NotGroups(text, UnknownGroup(name));
    mask |= ConfigMultGroup_t{1} << group;
  }
  return mask;
}

ConfigMultGroup_t ParseMask(const std::string& text) {
  if (text == "all") return kalStore::kAllConfigGroups;
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const char* const begin = text.data() + (isHexadecimal ? 2 : 0);
  const char* const end = text.data() + text.size();
  ConfigMultGroup_t mask = 0;
  const auto [stop, error] = std::from_chars(begin, end, mask, isHexadecimal ? 16 : 10);
  if (error == std::errc() && stop == end) return mask;
  const bool isNumber = !text.empty() && text.front() >= '0' && text.front() <= '9';
  if (isNumber && text.find(',') == std::string::npos) throw NotGroups(text, "no 32-bit mask");
  return ParseGroups(text);
}

// Everything that the command line asks for, read and found usable.
struct ApplyPlan {
  explicit ApplyPlan(const ApplyOptions& options) {
    for (const std::string& text : options.sets) addAssignment(ParseAssignment(text));
    std::vector<ConfigPath> paths;
    for (const std::string& text : options.watches) paths.push_back(ParseConfigPath("--watch", text));
    if (options.dump) dumpMask = ParseMask(*options.dump);
    documents = LoadDocuments(options.files);
    for (ConfigPath& path : paths) watch(std::move(path));
  }

  std::vector<SettingsDocument> documents;
  std::vector<SettingsEntry> assignments;
  std::set<std::pair<kalStore::KalConfigGroup, std::string>> watched;
  std::optional<ConfigMultGroup_t> dumpMask;

 private:
  void addAssignment(SettingsEntry entry) {
    for (SettingsEntry& earlier : assignments) {
      if (earlier.group == entry.group && earlier.name == entry.name) earlier.stays = false;
    }
    assignments.push_back(std::move(entry));
  }

  void watch(ConfigPath path) {
    if (!IsGlob(path.name)) {
      watched.emplace(path.group, std::move(path.name));
      return;
    }
    for (const SettingsDocument& document : documents) watchFitting(path, document.Entries());
    watchFitting(path, assignments);
  }

  void watchFitting(const ConfigPath& pattern, const std::vector<SettingsEntry>& entries) {
    for (const SettingsEntry& entry : entries) {
      if (entry.group == pattern.group && FitsGlob(pattern.name, entry.name)) {
        watched.emplace(entry.group, entry.name);
      }
    }
  }
};

class Applier {
 public:
  Applier(IKalConfig& store, Watcher& watcher, const ApplyOptions& options)
      : m_store(store), m_watcher(watcher), m_options(options) {}

  void Apply(const SettingsDocument& document) {
    document.PrintFindings(std::cerr);
    step(document.Name(), document.Entries(), document.SkippedCount(), [&] {
      const kalStore::JournalDocument name(document.Name().c_str());
      m_store.ApplyKalConfigs(document.Text().c_str());
    });
  }

  void Apply(const std::vector<SettingsEntry>& assignments) {
    step("--set", assignments, 0, [&] {
      const kalStore::JournalOrigin origin("--set");
      for (const SettingsEntry& entry : assignments) {
        m_store.SetKalConfig(entry.group, entry.name.c_str(), ConfigData(entry.value), false, false);
      }
    });
  }

 private:
  void step(const std::string& name, const std::vector<SettingsEntry>& entries, std::size_t skipped,
            const std::function<void()>& change) {
    if (m_options.quiet) {
      make(change, name);
      return;
    }
    if (!m_options.json) std::cout << Coloured(Colour::kBold, Printable(name)) << '\n';
    ChangeReport report(m_store, entries);
    make(change, name);
    const std::vector<Change> changes = report.Changes();
    for (const Change& one : changes) {
      if (m_options.json) {
        PrintChangeAsJson(std::cout, one, "document", name);
      } else {
        PrintChange(std::cout, one);
      }
    }
    if (m_options.json) return;
    std::cout << "  " << ChangeCounts(changes, report.NameCount() - changes.size(), skipped) << '\n';
  }

  void make(const std::function<void()>& change, const std::string& name) {
    std::optional<Progress> progress;  // Not beside events or trace lines.
    if (m_options.watches.empty() && !m_options.traceLevel) progress.emplace("applying " + Printable(name));
    change();
    m_watcher.Drain();
  }

  IKalConfig& m_store;
  Watcher& m_watcher;
  const ApplyOptions& m_options;
};

int Apply(const ApplyOptions& options) {
  const ApplyPlan plan(options);
  if (options.traceLevel) set_external_trace_mask(static_cast<int>(*options.traceLevel));

  CommandRecording recording(options.recording, options.files);
  const kalStore::CallStore store(kCallId, kalStore::CallStore::kEndsCall);
  bool skipped = false;
  {
    Watcher watcher(*store, options.async ? Way::kPosted : Way::kDirect,
                    options.json ? Watcher::Form::kJson : Watcher::Form::kText);
    for (const auto& [group, name] : plan.watched) watcher.Watch(group, name);

    Applier applier(*store, watcher, options);
    for (const SettingsDocument& document : plan.documents) {
      applier.Apply(document);
      skipped = skipped || document.SkippedCount() != 0;
    }
    if (!plan.assignments.empty()) applier.Apply(plan.assignments);
  }
  if (plan.dumpMask) PrintDump(store->DumpKalConfigs(*plan.dumpMask));
  return recording.End(options.strict && skipped ? kExitFindings : kExitFine);
}

std::string Footer() {
  return GroupsHelp() + "\n\n" +
         ExitStatusHelp("done", "done, but entries were skipped and --strict was given") +
         "\n\n"
         "Examples:\n"
         "  tessel apply base.json low-bandwidth.json\n"
         "      What does the second document change in a call that runs with the first?\n"
         "  tessel apply base.json --set Video/MaxFps=15 --quiet --dump all > merged.json\n"
         "      One document of both.\n"
         "  tessel apply base.json --quiet --dump Audio,Video\n"
         "  tessel apply base.json lab.json --watch 'Feature/*' --async --quiet\n"
         "      Which events would a component get that has feature toggles posted to its thread?\n"
         "  generate-settings | tessel apply - --strict --quiet\n"
         "      Would import skip anything?";
}

}  // namespace

void AddApplyCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<ApplyOptions>();
  CLI::App* const command =
      app.add_subcommand("apply", "Apply settings documents to a call's store and show what they change");
  SetFile(*command
               ->add_option("FILE", options->files,
                            "Settings documents, applied in this order; - is standard input")
               ->required());
  command->add_option("--set", options->sets, "Set a value after the documents; repeatable")
      ->type_name("GROUP/NAME=VALUE")
      ->allow_extra_args(false);
  command
      ->add_option("--dump", options->dump,
                   "Then print the store as a line of JSON: all groups, those named, or those of a mask, "
                   "decimal or 0x "
                   "and hexadecimal (bit g: group g)")
      ->type_name("GROUP,...|MASK|all");
  CLI::Option* const watch =
      command
          ->add_option("--watch", options->watches,
                       "Subscribe and print each event; repeatable; in NAME, * is any text and ? any letter")
          ->type_name("GROUP/NAME")
          ->allow_extra_args(false);
  command->add_flag("--async", options->async, "Have the events of --watch posted to a worker thread")
      ->needs(watch);
  command->add_flag("--strict", options->strict, "Exit with status 1 when import skips an entry");
  command->add_flag("--json", options->json,
                    "A JSON object per change, with its document, and per event, with its thread");
  AddRecordOption(*command, options->recording);
  command->add_flag("-q,--quiet", options->quiet, "Print no changes, only events and the dump");
  CLI::Option* const trace = command
                                 ->add_option("--trace", options->traceLevel,
                                              "Trace the library up to this level on standard error: 0 to 2")
                                 ->type_name("LEVEL");
  SetRange(*trace, 0, kMostTraceLevel);
  command->footer(Footer());
  command->callback([options, &exitStatus] { exitStatus = Apply(*options); });
}

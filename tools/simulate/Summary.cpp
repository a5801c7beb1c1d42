// SPDX-License-Identifier: Apache-2.0
#include "simulate/Summary.h"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <map>
#include <string>
#include <string_view>

#include "Colour.h"
#include "ConfigPath.h"
#include "JsonObject.h"
#include "simulate/Memory.h"
#include "simulate/Numbers.h"

namespace simulate {

namespace {

// Pads on the left; "µ" is one column and two bytes.
std::string Right(std::string text, std::size_t width) {
  const std::size_t columns = text.size() - (text.find("µ") == std::string::npos ? 0 : 1);
  if (columns < width) text.insert(0, width - columns, ' ');
  return text;
}

void Line(std::ostream& out, std::string_view name, std::uint64_t count, const std::string& what = "") {
  out << std::left << std::setw(18) << name << std::right << std::setw(10) << count
      << (what.empty() ? "" : "  ") << what << '\n';
}

// Each setting that has subscribers, of all calls.
struct Notified {
  std::uint64_t subscribers = 0;
  std::uint64_t sets = 0;
  std::uint64_t deliveries = 0;
};

std::map<SettingKey, Notified> NotifiedSettings(const Simulation& simulation) {
  std::map<SettingKey, Notified> notified;
  for (const Call& call : simulation.Calls()) {
    for (const auto& [key, setting] : call.Books().Settings()) {
      if (setting.subscribers.empty()) continue;
      Notified& one = notified[key];
      one.subscribers = setting.subscribers.size();
      one.sets += setting.notifiedChanges;
      for (const Subscriber& subscriber : setting.subscribers) one.deliveries += subscriber.Arrived();
    }
  }
  return notified;
}

void WriteLatencies(JsonObject& deliveries, Way way, const LatencyHistogram& latencies) {
  constexpr PerWay<const char*> kKeys = {"direct", "posted", "handedOver"};
  deliveries.Member(kKeys[IndexOf(way)], [&](JsonObject& members) {
    members.Member("count", latencies.Count())
        .Member("p50Ns", latencies.Quantile(0.5))
        .Member("p99Ns", latencies.Quantile(0.99))
        .Member("maxNs", latencies.Greatest());
  });
}

}  // namespace

void PrintSummary(std::ostream& out, const Simulation& simulation) {
  const Recorder& records = simulation.Records();
  out << Coloured(Colour::kBold, Plural(simulation.Calls().size(), "call") + ", " +
                                     Plural(simulation.ComponentCount(), "component") + ", " +
                                     Fixed(simulation.ElapsedSeconds(), 1) + " s")
      << '\n';
  Line(out, "sets", records.SetCount(),
       std::to_string(records.setsNotified) + " notified, " + std::to_string(records.setsWithoutSubscribers) +
           " without subscribers, " + std::to_string(records.setsUnchanged) + " unchanged");
  Line(out, "deliveries", records.DeliveryCount(),
       std::to_string(records.expectedDeliveries) + " expected, " +
           std::to_string(simulation.LostDeliveries()) + " lost, " +
           std::to_string(records.unexpectedDeliveries) + " unexpected, " +
           std::to_string(records.deliveriesOutOfOrder) + " out of order");
  Line(out, "  on subscribing", records.initialDeliveries);
  out << Right("p50", 42) << Right("p99", 12) << Right("max", 12) << '\n';
  for (const Way way : kWays) {
    const LatencyHistogram& latencies = records.Latencies(way);
    out << "  " << std::left << std::setw(16) << NameOf(way) << std::right << std::setw(10)
        << latencies.Count() << Right(Duration(latencies.Quantile(0.5)), 14)
        << Right(Duration(latencies.Quantile(0.99)), 12) << Right(Duration(latencies.Greatest()), 12) << '\n';
  }
  Line(out, "reads", records.reads);
  Line(out, "statistics writes", records.statisticsWrites);
  Line(out, "statistics reads", records.statisticsReads,
       std::to_string(records.framesReported) + " of " + std::to_string(records.framesSent) +
           " video frames reported");
  const Memory memory = MemoryInUse();
  out << std::left << std::setw(18) << "memory" << Right(Mebibytes(memory.residentKiB), 10) << "  "
      << Mebibytes(memory.peakKiB) << " at most\n";
}

void PrintSummaryAsJson(std::ostream& out, const Simulation& simulation) {
  const Recorder& records = simulation.Records();
  const Memory memory = MemoryInUse();
  JsonObject(out)
      .Raw("seconds", Fixed(simulation.ElapsedSeconds(), 3))
      .Member("calls", simulation.Calls().size())
      .Member("components", simulation.ComponentCount())
      .Member("sets",
              [&](JsonObject& sets) {
                sets.Member("notified", records.setsNotified.load())
                    .Member("withoutSubscribers", records.setsWithoutSubscribers.load())
                    .Member("unchanged", records.setsUnchanged.load());
              })
      .Member("deliveries",
              [&](JsonObject& deliveries) {
                deliveries.Member("expected", records.expectedDeliveries.load())
                    .Member("lost", simulation.LostDeliveries())
                    .Member("unexpected", records.unexpectedDeliveries.load())
                    .Member("outOfOrder", records.deliveriesOutOfOrder.load())
                    .Member("onSubscribing", records.initialDeliveries.load());
                for (const Way way : kWays) WriteLatencies(deliveries, way, records.Latencies(way));
              })
      .Member("reads", records.reads.load())
      .Member("statistics",
              [&](JsonObject& statistics) {
                statistics.Member("writes", records.statisticsWrites.load())
                    .Member("reads", records.statisticsReads.load())
                    .Member("framesSent", records.framesSent.load())
                    .Member("framesReported", records.framesReported.load());
              })
      .Member("memory",
              [&](JsonObject& members) {
                members.Member("residentKiB", memory.residentKiB).Member("peakKiB", memory.peakKiB);
              })
      .Array("settings", NotifiedSettings(simulation), [](JsonObject& setting, const auto& entry) {
        const auto& [key, notified] = entry;
        setting.Member("setting", ShownPath(key.first, key.second))
            .Member("subscribers", notified.subscribers)
            .Member("sets", notified.sets)
            .Member("deliveries", notified.deliveries);
      });
}

}  // namespace simulate

#include "simulate/Summary.h"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <map>
#include <string>
#include <string_view>

#include "Colour.h"
#include "ConfigPath.h"
#include "Printable.h"
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
struct Told {
  std::uint64_t subscribers = 0;
  std::uint64_t sets = 0;
  std::uint64_t deliveries = 0;
};

std::map<SettingKey, Told> ToldSettings(const Simulation& simulation) {
  std::map<SettingKey, Told> told;
  for (const Call& call : simulation.Calls()) {
    for (const auto& [key, setting] : call.Books().Settings()) {
      if (setting.subscribers.empty()) continue;
      Told& one = told[key];
      one.subscribers = setting.subscribers.size();
      one.sets += setting.toldChanges;
      for (const Subscriber& subscriber : setting.subscribers) one.deliveries += subscriber.Arrived();
    }
  }
  return told;
}

}  // namespace

void PrintSummary(std::ostream& out, const Simulation& simulation) {
  const Recorder& records = simulation.Records();
  out << Coloured(Colour::kBold, Plural(simulation.Calls().size(), "call") + ", " +
                                     Plural(simulation.ComponentCount(), "component") + ", " +
                                     Fixed(simulation.ElapsedSeconds(), 1) + " s")
      << '\n';
  Line(out, "sets", records.SetCount(),
       std::to_string(records.setsTold) + " told, " + std::to_string(records.setsToNobody) + " to nobody, " +
           std::to_string(records.setsUnchanged) + " unchanged");
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
  out << "{\"seconds\":" << Fixed(simulation.ElapsedSeconds(), 3)
      << ",\"calls\":" << simulation.Calls().size() << ",\"components\":" << simulation.ComponentCount()
      << ",\"sets\":{\"told\":" << records.setsTold << ",\"toNobody\":" << records.setsToNobody
      << ",\"unchanged\":" << records.setsUnchanged
      << "},\"deliveries\":{\"expected\":" << records.expectedDeliveries
      << ",\"lost\":" << simulation.LostDeliveries() << ",\"unexpected\":" << records.unexpectedDeliveries
      << ",\"outOfOrder\":" << records.deliveriesOutOfOrder
      << ",\"onSubscribing\":" << records.initialDeliveries;
  for (const Way way : kWays) {
    const LatencyHistogram& latencies = records.Latencies(way);
    constexpr PerWay<const char*> kKeys = {"direct", "posted", "handedOver"};
    out << ',' << Quoted(kKeys[IndexOf(way)]) << ":{\"count\":" << latencies.Count()
        << ",\"p50Ns\":" << latencies.Quantile(0.5) << ",\"p99Ns\":" << latencies.Quantile(0.99)
        << ",\"maxNs\":" << latencies.Greatest() << '}';
  }
  out << "},\"reads\":" << records.reads << ",\"statistics\":{\"writes\":" << records.statisticsWrites
      << ",\"reads\":" << records.statisticsReads << ",\"framesSent\":" << records.framesSent
      << ",\"framesReported\":" << records.framesReported
      << "},\"memory\":{\"residentKiB\":" << memory.residentKiB << ",\"peakKiB\":" << memory.peakKiB
      << "},\"settings\":[";
  const char* separator = "";
  for (const auto& [key, told] : ToldSettings(simulation)) {
    out << separator << "{\"setting\":" << Quoted(ShownPath(key.first, key.second))
        << ",\"subscribers\":" << told.subscribers << ",\"sets\":" << told.sets
        << ",\"deliveries\":" << told.deliveries << '}';
    separator = ",";
  }
  out << "]}\n";
}

}  // namespace simulate

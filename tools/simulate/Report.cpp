// SPDX-License-Identifier: Apache-2.0
#include "simulate/Report.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

#include "simulate/CallPlots.h"
#include "simulate/Html.h"
#include "simulate/Memory.h"
#include "simulate/Numbers.h"
#include "simulate/ReportStyle.h"
#include "simulate/SettingsTables.h"
#include "simulate/SvgPlot.h"
#include "simulate/TimeLine.h"

namespace simulate {

namespace {

// No reader looks at the plots of more calls.
constexpr std::size_t kShownCalls = 4;

void Tile(std::ostream& out, std::string_view name, const std::string& figure, const std::string& note) {
  out << "<div><dt>" << name << "</dt><dd>" << figure << "<small>" << note << "</small></dd></div>\n";
}

void Head(std::ostream& out, const Simulation& simulation) {
  const Recorder& records = simulation.Records();
  out << "<header><h1>A media engine's calls, simulated</h1>\n<p>"
      << Plural(simulation.Calls().size(), "call") << " with "
      << Plural(simulation.ComponentCount(), "component") << " for " << Fixed(simulation.ElapsedSeconds(), 1)
      << " s.";
  const char* separator = " Settings: ";
  for (const SettingsDocument& document : simulation.Plan().documents) {
    out << separator << "<code>" << HtmlText(document.Name()) << "</code>";
    separator = ", ";
  }
  if (simulation.Plan().documents.empty()) out << " No settings documents.";
  out << "</p>\n<dl class=\"tiles\">\n";

  Tile(out, "sets", Grouped(records.SetCount()),
       Grouped(records.setsNotified) + " notified, " + Grouped(records.setsWithoutSubscribers) +
           " without subscribers, " + Grouped(records.setsUnchanged) + " unchanged");
  const std::size_t lost = simulation.LostDeliveries();
  Tile(out, "deliveries", Grouped(records.DeliveryCount()),
       (lost == 0 ? "none lost" : "<span class=\"bad\">" + Grouped(lost) + " lost</span>") + ", " +
           Grouped(records.deliveriesOutOfOrder) + " out of order");
  Tile(out, "reads", Grouped(records.reads), "of values, computed ones and toggles");
  Tile(out, "statistics reads", Grouped(records.statisticsReads),
       Grouped(records.statisticsWrites) + " writes; " + Grouped(records.framesReported) + " of " +
           Grouped(records.framesSent) + " frames reported");
  const Memory memory = MemoryInUse();
  Tile(out, "memory", Mebibytes(memory.residentKiB), Mebibytes(memory.peakKiB) + " at most");
  out << "</dl></header>\n";
}

void WaysTable(std::ostream& out, const Recorder& records) {
  out << "<div class=\"card\"><table class=\"ways\"><thead><tr><th scope=\"col\">way</th><th scope=\"col\" "
         "class=\"number\">deliveries</th><th scope=\"col\" class=\"number\">p50</th><th scope=\"col\" "
         "class=\"number\">p99</th><th scope=\"col\" class=\"number\">max</th></tr></thead><tbody>\n";
  for (const Way way : kWays) {
    const LatencyHistogram& latencies = records.Latencies(way);
    out << "<tr><th scope=\"row\">" << NameOf(way) << "</th>";
    for (const std::string& cell : {Grouped(latencies.Count()), Duration(latencies.Quantile(0.5)),
                                    Duration(latencies.Quantile(0.99)), Duration(latencies.Greatest())}) {
      out << "<td class=\"number\">" << cell << "</td>";
    }
    out << "</tr>\n";
  }
  out << "</tbody></table></div>\n";
}

// Bars from one power of two halfway to the next, and from there to it.
std::vector<std::int64_t> Boundaries() {
  std::vector<std::int64_t> boundaries;
  for (std::int64_t power = 64; power < std::int64_t{1} << 40; power *= 2) {
    boundaries.push_back(power);
    boundaries.push_back(power / 2 * 3);
  }
  return boundaries;
}

void Latencies(std::ostream& out, const Recorder& records) {
  const std::vector<std::int64_t> boundaries = Boundaries();
  PerWay<DurationBars> plots;
  std::int64_t from = 1000;
  std::int64_t to = 1000000;
  for (const Way way : kWays) {
    const LatencyHistogram& latencies = records.Latencies(way);
    DurationBars& plot = plots[IndexOf(way)];
    plot = {StyleOf(way), {}, latencies.Quantile(0.5), latencies.Quantile(0.99)};
    for (std::size_t i = 0; i + 1 < boundaries.size(); ++i) {
      const std::uint64_t count = latencies.CountBetween(boundaries[i], boundaries[i + 1]);
      if (count == 0) continue;
      plot.bars.push_back({boundaries[i], boundaries[i + 1], count});
      from = std::min(from, boundaries[i]);
      to = std::max(to, boundaries[i + 1]);
    }
  }
  out << "<div class=\"plots three\">\n";
  for (const Way way : kWays) WriteDurationPlot(out, NameOf(way), plots[IndexOf(way)], from, to);
  out << "</div>\n";
}

void CallSections(std::ostream& out, const Simulation& simulation) {
  std::size_t shown = 0;
  for (const Call& call : simulation.Calls()) {
    if (shown++ == kShownCalls) break;
    out << "<section><h2>Call " << call.Id()
        << "</h2>\n<p>What the statistics blocks of the call said.</p>\n";
    WriteCallPlots(out, call.Samples(), simulation.ElapsedSeconds());
    out << "</section>\n";
  }
  if (simulation.Calls().size() > kShownCalls) {
    out << "<p>The other " << simulation.Calls().size() - kShownCalls
        << " calls are in the figures above; their plots and settings are left out.</p>\n";
  }
}

}  // namespace

std::string Report(const Simulation& simulation) {
  std::ostringstream out;
  out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<title>tessel simulate</title>\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"color-scheme\" content=\"light dark\">\n"
         "<link rel=\"icon\" href=\"data:,\">\n<style>"
      << kReportStyle << "</style></head>\n<body>\n";
  Head(out, simulation);
  out << "<main>\n<section><h2>How long deliveries took</h2>\n<p>From the set to the callback in the "
         "subscriber: "
         "<b>direct</b> on the setter's thread, <b>posted</b> to the subscriber's thread, or <b>handed "
         "over</b> "
         "to it while the setter waits. Values of a document count from its import.</p>\n";
  WaysTable(out, simulation.Records());
  Latencies(out, simulation.Records());
  out << "</section>\n<section><h2>Time line</h2>\n<p>All calls together; the number at the end of a lane is "
         "its "
         "sum, and its highest bar fills it.</p>\n";
  WriteTimeLine(out, simulation);
  out << "</section>\n";
  CallSections(out, simulation);
  out << "<section><h2>Toggles that differ from their default</h2>\n<p>A toggle that is not set is on. In "
         "call "
         "1:</p>\n";
  WriteTogglesTable(out, simulation);
  out << "</section>\n<section><h2>Settings at the end</h2>\n<p>With what changed each last, and when.</p>\n";
  WriteSettingsTable(out, simulation, kShownCalls);
  out << "</section>\n</main>\n<footer>Written by tessel " TESSEL_VERSION ".</footer>\n</body></html>\n";
  return std::move(out).str();
}

}  // namespace simulate

// SPDX-License-Identifier: Apache-2.0
#include "simulate/TimeLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>

#include "ConfigPath.h"
#include "simulate/Axis.h"
#include "simulate/Html.h"
#include "simulate/Numbers.h"
#include "simulate/ReportStyle.h"

namespace simulate {

namespace {

constexpr double kLaneHeight = 24;

using Counts = std::array<std::uint32_t, TimeBins::kCount>;

void Add(Counts& counts, const TimeBins& bins) {
  for (std::size_t bin = 0; bin < counts.size(); ++bin) counts[bin] += bins.Count(bin);
}

// The lanes of one run, which all have the same time below them.
class Lanes {
 public:
  Lanes(std::ostream& out, const Simulation& simulation)
      : m_out(out),
        m_seconds(std::min(simulation.ElapsedSeconds(), simulation.Plan().seconds)),
        m_bins(std::max(1.0, m_seconds / simulation.Plan().seconds * TimeBins::kCount)),
        m_axis(Axis::EndingAt(m_seconds, 6)) {}

  void Heading(const char* text) { m_out << "<h3>" << text << "</h3>\n"; }

  // How often something happened, as bars.
  void Bars(const std::string& label, const char* style, const Counts& counts) {
    std::uint64_t total = 0;
    for (const std::uint32_t count : counts) total += count;
    const double greatest = std::max(1U, *std::max_element(counts.begin(), counts.end()));
    begin(label);
    m_out << "<path class=\"mark fill " << style << "\" d=\"";
    for (std::size_t bin = 0; bin < counts.size(); ++bin) {
      if (counts[bin] == 0) continue;
      const double height = std::max(3.0, kLaneHeight * counts[bin] / greatest);
      m_out << 'M' << bin << ' ' << Fixed(kLaneHeight, 0) << "v-" << Fixed(height, 1) << "h.9v"
            << Fixed(height, 1) << 'z';
    }
    m_out << "\"/>";
    end(Grouped(total));
  }

  // When documents arrived, with their names between one and the next.
  void Documents(const std::vector<Simulation::Arrival>& arrivals) {
    begin("documents");
    for (const auto& arrival : arrivals) {
      m_out << "<path class=\"mark arrival\" d=\"M" << Fixed(share(arrival.time) * m_bins, 2) << " 0V"
            << kLaneHeight << "\"/>";
    }
    end(Grouped(arrivals.size()));
    m_out << "<div class=\"lane names\"><span></span><div>";
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
      const double from = share(arrivals[i].time);
      const double to = i + 1 < arrivals.size() ? share(arrivals[i + 1].time) : 1;
      const std::string& title = arrivals[i].title;
      m_out << "<i style=\"left:" << Fixed(100 * from, 2) << "%;width:" << Fixed(100 * (to - from), 2)
            << "%\" title=\"" << HtmlText(title) << "\">" << HtmlText(title.substr(title.rfind('/') + 1))
            << "</i>";
    }
    m_out << "</div><span></span></div>\n";
  }

  void TimeAxis() {
    m_out << "<div class=\"lane names axis-row\"><span></span><div>";
    for (const double line : m_axis.lines) {
      m_out << "<i style=\"left:" << Fixed(100 * line / m_seconds, 2) << "%\">" << m_axis.Label(line)
            << (line == 0 ? " s" : "") << "</i>";
    }
    m_out << "</div><span></span></div>\n";
  }

 private:
  double share(RunTime time) const { return std::min(1.0, Seconds(time) / m_seconds); }

  void begin(const std::string& label) {
    m_out << "<div class=\"lane\"><span>" << HtmlText(label) << "</span><svg viewBox=\"0 0 "
          << Fixed(m_bins, 2) << ' ' << kLaneHeight
          << "\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" << HtmlText(label) << "\">";
    for (const double line : m_axis.lines) {
      m_out << "<path class=\"grid\" d=\"M" << Fixed(line / m_seconds * m_bins, 2) << " 0V" << kLaneHeight
            << "\"/>";
    }
  }
  void end(const std::string& number) { m_out << "</svg><b>" << number << "</b></div>\n"; }

  std::ostream& m_out;
  const double m_seconds;
  const double m_bins;
  const Axis m_axis;
};

}  // namespace

void WriteTimeLine(std::ostream& out, const Simulation& simulation) {
  Lanes lanes(out, simulation);
  out << "<div class=\"card timeline\">\n";
  if (!simulation.Arrivals().empty()) {
    lanes.Heading("Documents that arrived");
    lanes.Documents(simulation.Arrivals());
  }

  std::map<SettingKey, Counts> changes;
  for (const Call& call : simulation.Calls()) {
    for (const auto& [key, setting] : call.Books().Settings()) {
      if (setting.changesByComponents != nullptr) Add(changes[key], *setting.changesByComponents);
    }
  }
  lanes.Heading("Changes by components");
  for (const auto& [key, counts] : changes) lanes.Bars(ShownPath(key.first, key.second), "s4", counts);

  lanes.Heading("Deliveries");
  for (const Way way : kWays) {
    Counts counts{};
    Add(counts, simulation.Records().Deliveries(way));
    lanes.Bars(NameOf(way), StyleOf(way), counts);
  }
  lanes.TimeAxis();
  out << "</div>\n";
}

}  // namespace simulate

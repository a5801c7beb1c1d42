// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace simulate {

/// One line of a plot.
struct PlotLine {
  struct Point {
    double x;
    double y;
  };
  std::string name;
  const char* style;  ///< A class of the report's style sheet: s1 to s4, or "area" for a filled background.
  std::vector<Point> points;
};

/// Writes a figure: lines over the time of the run, each named in the legend.
void WriteTimePlot(std::ostream& out, const std::string& title, const std::string& unit, double seconds,
                   const std::vector<PlotLine>& lines);

/// Bars over durations, on a logarithmic axis.
struct DurationBars {
  struct Bar {
    std::int64_t from;  ///< Nanoseconds.
    std::int64_t to;
    std::uint64_t count;
  };
  const char* style;
  std::vector<Bar> bars;
  // Lines across, in nanoseconds.
  std::int64_t median;
  std::int64_t p99;
};

/// Writes a figure with the bars. `from` and `to` are the ends of the axis, in nanoseconds.
void WriteDurationPlot(std::ostream& out, const std::string& title, const DurationBars& bars,
                       std::int64_t from, std::int64_t to);

/// The part of a legend for one style.
std::string LegendEntry(const char* style, const std::string& name);

}  // namespace simulate

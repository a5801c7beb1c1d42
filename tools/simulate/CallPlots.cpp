// SPDX-License-Identifier: Apache-2.0
#include "simulate/CallPlots.h"

#include "simulate/SvgPlot.h"

namespace simulate {

namespace {

struct Series {
  const char* name;
  const char* style;
  double Sample::* member;
};

struct Plot {
  const char* title;
  const char* unit;
  double unitSize;
  std::vector<Series> series;
};

const std::vector<Plot>& Plots() {
  static const std::vector<Plot> kPlots = {
      {"Video bit rate",
       "Mbit/s",
       1e6,
       {{"link's capacity", "area", &Sample::capacity},
        {"estimate", "s4", &Sample::bandwidth},
        {"sent", "s1", &Sample::videoSent},
        {"received", "s2", &Sample::videoReceived}}},
      {"Audio bit rate",
       "kbit/s",
       1e3,
       {{"sent", "s1", &Sample::audioSent}, {"received", "s2", &Sample::audioReceived}}},
      {"Video frame rate",
       "frames/s",
       1,
       {{"target", "s4", &Sample::targetFps},
        {"sent", "s1", &Sample::sentFps},
        {"shown", "s2", &Sample::receivedFps}}},
      {"Picture height", "lines", 1, {{"sent", "s1", &Sample::pictureHeight}}},
      {"Packets received",
       "packets/s",
       1,
       {{"video", "s1", &Sample::videoPackets}, {"audio", "s3", &Sample::audioPackets}}},
      {"Packets lost",
       "packets/s",
       1,
       {{"video", "s1", &Sample::videoLost}, {"audio", "s3", &Sample::audioLost}}},
      {"Audio delay", "ms", 1, {{"end to end", "s1", &Sample::endToEndMs}}},
      {"Audio jitter",
       "ms",
       1,
       {{"jitter", "s1", &Sample::jitterMs}, {"jitter buffer's target", "s4", &Sample::bufferMs}}},
  };
  return kPlots;
}

}  // namespace

void WriteCallPlots(std::ostream& out, const std::vector<Sample>& samples, double seconds) {
  out << "<div class=\"plots\">\n";
  for (const Plot& plot : Plots()) {
    std::vector<PlotLine> lines;
    for (const Series& series : plot.series) {
      PlotLine& line = lines.emplace_back(PlotLine{series.name, series.style, {}});
      for (const Sample& sample : samples) {
        line.points.push_back({sample.seconds, sample.*series.member / plot.unitSize});
      }
    }
    WriteTimePlot(out, plot.title, plot.unit, seconds, lines);
  }
  out << "</div>\n";
}

}  // namespace simulate

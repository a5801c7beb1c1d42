// SPDX-License-Identifier: Apache-2.0
#include "simulate/SvgPlot.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "simulate/Axis.h"
#include "simulate/Html.h"
#include "simulate/Numbers.h"

namespace simulate {

namespace {

// In units of the picture, which is shown about as large as that many pixels.
constexpr double kTimeWidth = 480, kDurationWidth = 350, kHeight = 236;
constexpr double kLeft = 44, kRightMargin = 20, kTop = 28, kBottom = 190;

bool IsArea(const char* style) {
  return std::string_view(style) == "area";
}

// The frame of a plot: from its caption to its axes.
class Picture {
 public:
  Picture(std::ostream& out, const std::string& title, const std::string& legend, double width,
          const Axis& values)
      : m_out(out), m_right(width - kRightMargin), m_values(values) {
    m_out << "<figure class=\"plot\"><figcaption><b>" << HtmlText(title) << "</b><span class=\"legend\">"
          << legend << "</span></figcaption>\n<svg viewBox=\"0 0 " << width << ' ' << kHeight
          << "\" role=\"img\" aria-label=\"" << HtmlText(title) << "\">";
  }
  ~Picture() { m_out << "</svg></figure>\n"; }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  double X(double share) const { return kLeft + (m_right - kLeft) * std::clamp(share, 0.0, 1.0); }
  double Y(double value) const { return kBottom - (kBottom - kTop) * value / m_values.end; }

  void Values(std::string_view unit) {
    for (const double line : m_values.lines) {
      rule(line == 0 ? "axis" : "grid", kLeft, Y(line), m_right, Y(line));
      text(kLeft - 6, Y(line) + 4, "end", m_values.Label(line));
    }
    text(2, 12, "start", unit);
  }
  void Tick(double share, const std::string& label) {
    rule("axis", X(share), kBottom, X(share), kBottom + 4);
    text(X(share), kBottom + 22, "middle", label);
  }
  void Name(std::string_view axis) { text((kLeft + m_right) / 2, kHeight - 5, "middle", axis); }

  void Across(const char* style, double share) { rule(style, X(share), kTop, X(share), kBottom); }
  void Line(const PlotLine& line, double seconds) {
    m_out << "<path class=\"mark " << line.style << "\" d=\"";
    char command = 'M';
    const auto to = [&](double x, double y) {
      m_out << command << at(X(x / seconds), Y(y));
      command = 'L';
    };
    const bool isArea = IsArea(line.style) && !line.points.empty();
    if (isArea) to(line.points.front().x, 0);
    for (const auto& [x, y] : line.points) to(x, y);
    if (isArea) to(line.points.back().x, 0);
    m_out << "\"/>";
  }
  void Bar(const char* style, double fromShare, double toShare, double value, const std::string& tip) {
    m_out << "<rect class=\"mark fill " << style << "\" x=\"" << Fixed(X(fromShare) + 0.5, 1) << "\" y=\""
          << Fixed(Y(value), 1) << "\" width=\"" << Fixed(X(toShare) - X(fromShare) - 1, 1) << "\" height=\""
          << Fixed(kBottom - Y(value), 1) << "\"><title>" << tip << "</title></rect>";
  }

 private:
  static std::string at(double x, double y) { return Fixed(x, 1) + " " + Fixed(y, 1); }
  void text(double x, double y, const char* anchor, std::string_view words) {
    m_out << "<text x=\"" << Fixed(x, 1) << "\" y=\"" << Fixed(y, 1) << "\" text-anchor=\"" << anchor << "\">"
          << HtmlText(words) << "</text>";
  }
  void rule(const char* style, double x1, double y1, double x2, double y2) {
    m_out << "<path class=\"" << style << "\" d=\"M" << at(x1, y1) << "L" << at(x2, y2) << "\"/>";
  }

  std::ostream& m_out;
  const double m_right;
  const Axis m_values;
};

}  // namespace

void WriteTimePlot(std::ostream& out, const std::string& title, const std::string& unit, double seconds,
                   const std::vector<PlotLine>& lines) {
  std::string legend;
  double greatest = 0;
  for (const PlotLine& line : lines) {
    legend += LegendEntry(line.style, line.name);
    for (const auto& [x, y] : line.points) greatest = std::max(greatest, y);
  }
  Picture picture(out, title, legend, kTimeWidth, Axis::UpTo(greatest == 0 ? 1 : greatest, 5));
  const auto draw = [&](bool areas) {
    for (const PlotLine& line : lines) {
      if (IsArea(line.style) == areas) picture.Line(line, seconds);
    }
  };
  draw(true);
  picture.Values(unit);
  const Axis time = Axis::EndingAt(seconds, 8);
  for (const double line : time.lines) picture.Tick(line / seconds, time.Label(line));
  picture.Name("time, s");
  draw(false);
}

void WriteDurationPlot(std::ostream& out, const std::string& title, const DurationBars& bars,
                       std::int64_t from, std::int64_t to) {
  const auto log = [](std::int64_t value) { return std::log2(static_cast<double>(value)); };
  const auto share = [&](std::int64_t value) {
    return (log(std::max(value, from)) - log(from)) / (log(to) - log(from));
  };
  std::uint64_t greatest = 5;
  for (const auto& bar : bars.bars) greatest = std::max(greatest, bar.count);
  Picture picture(out, title, LegendEntry("median", "p50") + LegendEntry("p99", "p99"), kDurationWidth,
                  Axis::UpTo(static_cast<double>(greatest), 5));
  picture.Values("deliveries");
  for (std::int64_t decade = 1; decade <= to; decade *= 10) {
    if (decade >= from) picture.Tick(share(decade), Duration(decade));
  }
  picture.Name("set to callback, logarithmic");
  for (const auto& bar : bars.bars) {
    picture.Bar(bars.style, share(bar.from), share(bar.to), static_cast<double>(bar.count),
                Duration(bar.from) + " to " + Duration(bar.to) + ": " + Grouped(bar.count));
  }
  picture.Across("median", share(bars.median));
  picture.Across("p99", share(bars.p99));
}

std::string LegendEntry(const char* style, const std::string& name) {
  return "<span><svg class=\"key\" viewBox=\"0 0 22 10\" aria-hidden=\"true\"><path class=\"" +
         std::string(style) + (IsArea(style) ? "\" d=\"M0 0H22V10H0Z\"" : "\" d=\"M0 5H22\"") + "/></svg>" +
         HtmlText(name) + "</span>";
}

}  // namespace simulate

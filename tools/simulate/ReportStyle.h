#pragma once

namespace simulate {

/// The style sheet of the report: light and dark, wide and narrow, and for paper.
extern const char* const kReportStyle;

}  // namespace simulate

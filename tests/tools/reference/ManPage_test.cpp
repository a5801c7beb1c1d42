// SPDX-License-Identifier: Apache-2.0
#include "reference/ManPage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "SmallCommandLine.h"

namespace {

std::string PageOfProgram(const CommandLine& line) {
  std::ostringstream out;
  WriteManPage(out, line);
  return out.str();
}

std::string PageOfCommand(std::size_t index) {
  const CommandLine line = SmallCommandLine();
  std::ostringstream out;
  WriteManPage(out, line, line.commands[index]);
  return out.str();
}

TEST(ManPage, OfAProgramHasItsCommands) {
  EXPECT_EQ(PageOfProgram(SmallCommandLine()), R"(.\" Made from the definition of the command line.
.TH SMALL 1 "" "small 2.1\-beta" "User Commands"
.SH NAME
small \- See what is drawn
.SH SYNOPSIS
\fBsmall\fR \fICOMMAND\fR ...
.SH DESCRIPTION
See what is drawn.
.PP
Colours are those of the screen
unless \-c is given.
.SH COMMANDS
.TP
\fBdraw\fR
Draw: what \eis [visible]
.TP
\fBlist\fR
List names
.SH OPTIONS
.TP
\fB\-h\fR, \fB\-\-help\fR
Print this help
.TP
\fB\-\-version\fR
Print the version
.SH EXIT STATUS
.nf
0  done
1  nothing to draw
.fi
.SH SEE ALSO
.BR small\-draw (1),
.BR small\-list (1)
)");
}

TEST(ManPage, OfACommandHasItsArgumentsBeforeItsOptions) {
  EXPECT_EQ(PageOfCommand(0), R"(.\" Made from the definition of the command line.
.TH SMALL\-DRAW 1 "" "small 2.1\-beta" "User Commands"
.SH NAME
small\-draw \- Draw: what \eis [visible]
.SH SYNOPSIS
\fBsmall draw\fR [\fIOPTION\fR]... \fISHAPE\fR [\fIFILE\fR...]
.SH DESCRIPTION
Draw: what \eis [visible].
.PP
\&.5 is a half.
.PP
Another part.
.SH ARGUMENTS
.TP
\fISHAPE\fR
What to draw
.TP
\fIFILE\fR
Where it is from
.SH OPTIONS
.TP
\fB\-h\fR, \fB\-\-help\fR
Print this help
.TP
\fB\-o\fR, \fB\-\-output\fR \fIFILE\fR
Write to this file
.TP
\fB\-c\fR, \fB\-\-colours\fR \fIN|none|all\fR
How many: [all] or \en
.TP
\fB\-\-set\fR \fIGROUP/NAME\fR
Set a value
.TP
\fB\-\-at\fR \fIX:Y[:Z]\fR
Where
.SH EXAMPLES
.nf
small draw circle
  A circle.

small draw square a.txt
.fi
.SH SEE ALSO
.BR small (1),
.BR small\-list (1)
)");
}

TEST(ManPage, HasNoPartsThatWouldBeEmpty) {
  EXPECT_EQ(PageOfCommand(1), R"(.\" Made from the definition of the command line.
.TH SMALL\-LIST 1 "" "small 2.1\-beta" "User Commands"
.SH NAME
small\-list \- List names
.SH SYNOPSIS
\fBsmall list\fR [\fIOPTION\fR]... [\fINAME\fR]
.SH DESCRIPTION
List names.
.SH ARGUMENTS
.TP
\fINAME\fR
Which of them
.SH SEE ALSO
.BR small (1),
.BR small\-draw (1)
)");
}

TEST(ManPage, PrintsTextAsItIs) {
  const CommandLine line = {
      {"az-AZ`{", R"(.a\b-'c'."d")", {}, {{"", {"'e", ".f", "a.b"}}, {".`a-z{^~", {".\\"}}}}, "\"1.0\"", {}};
  EXPECT_EQ(PageOfProgram(line), R"(.\" Made from the definition of the command line.
.TH AZ\-AZ\(ga{ 1 "" "\(dq1.0\(dq" "User Commands"
.SH NAME
az\-AZ\(ga{ \- \&.a\eb\-\(aqc\(aq.\(dqd\(dq
.SH SYNOPSIS
\fBaz\-AZ\(ga{\fR \fICOMMAND\fR ...
.SH DESCRIPTION
\&.a\eb\-\(aqc\(aq.\(dqd\(dq.
.PP
\(aqe
\&.f
a.b
.SH COMMANDS
.SH \&.\(gaA\-Z{\(ha\(ti
.nf
\&.\e
.fi
.SH SEE ALSO
)");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tessel/version.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Program.h"

TEST(Tessel, PrintsItsVersion) {
  const Finished run = Program().Run({"--version"});
  std::ostringstream version;
  version << "tessel " << TESSEL_VERSION_MAJOR << '.' << TESSEL_VERSION_MINOR << '.' << TESSEL_VERSION_PATCH
          << '\n';
  EXPECT_EQ(run.out, version.str());
  EXPECT_EQ(run.status, 0);
}

TEST(Tessel, ShowsExamplesInItsHelp) {
  for (const auto& arguments : {std::vector<std::string>{"--help"}, {"apply", "--help"}, {"apply", "-h"}}) {
    const Finished run = Program().Run(arguments);
    EXPECT_NE(run.out.find("Examples:\n  tessel apply base.json"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(Tessel, RefusesAnUnusableCommandLineInOneLine) {
  for (const auto& arguments : {std::vector<std::string>{},
                                {"aply"},
                                {"--unknown"},
                                {"apply"},
                                {"apply", "--dump"},
                                {"apply", "a.json", "--unknown"},
                                {"apply", "a.json", "--un\nknown"},
                                {"apply", "a.json", "--trace", "loud"},
                                {"apply", "a.json", "--dump", "1", "--dump", "2"}}) {
    const Finished run = Program().File("a.json", "{}").Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("tessel: ", 0), 0U) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.status, 2) << run.err;
  }
}

TEST(Tessel, SuggestsTheNearestCommandOrOption) {
  const std::pair<std::vector<std::string>, std::string> refusals[] = {
      {{}, "a command is missing (tessel --help tells more)"},
      {{"aply", "a.json"},
       "there is no command \"aply\" (did you mean \"apply\"?) (tessel --help tells more)"},
      {{"Lint"}, "there is no command \"Lint\" (did you mean \"lint\"?) (tessel --help tells more)"},
      {{"music"}, "there is no command \"music\" (tessel --help tells more)"},
      {{"--versoin"},
       "there is no option \"--versoin\" (did you mean \"--version\"?) (tessel --help tells more)"},
      {{"apply", "a.json", "--wacth", "Audio/A"},
       "there is no option \"--wacth\" (did you mean \"--watch\"?) (tessel apply --help tells more)"},
      {{"lint", "a.json", "--fromat=json"},
       "there is no option \"--fromat\" (did you mean \"--format\"?) (tessel lint --help tells more)"},
      {{"lint", "a.json", "-z"}, "there is no option \"-z\" (tessel lint --help tells more)"},
      {{"lint", "a.json", "--format", "jsn"},
       "--format: expected text or json or github, not \"jsn\" (did you mean \"json\"?) (tessel lint --help "
       "tells more)"},
      {{"diff", "a.json", "b.json", "--json=foo = x"},
       "--json: expected no value, not \"foo = x\" (tessel diff --help tells more)"},
      {{"apply", "--wacth"},
       "there is no option \"--wacth\" (did you mean \"--watch\"?) (tessel apply --help tells more)"},
      {{"apply"}, "FILE is required (tessel apply --help tells more)"},
      {{"stats", "a", "b"}, "\"b\" is one argument too many (tessel stats --help tells more)"},
  };
  for (const auto& [arguments, reason] : refusals) {
    const Finished run = Program().Run(arguments);
    EXPECT_EQ(run.err, "tessel: " + reason + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(Tessel, SaysThatAnOptionLacksItsValueOrIsGivenTwice) {
  Program program;
  program.File("a.json", "{}");
  EXPECT_EQ(program.Run({"apply", "a.json", "--dump"}).err,
            "tessel: --dump: a value is missing (tessel apply --help tells more)\n");
  EXPECT_EQ(program.Run({"toggles", "--from"}).err,
            "tessel: --from: a value is missing (tessel toggles --help tells more)\n");
  EXPECT_EQ(program.Run({"apply", "a.json", "--trace", "1", "--trace", "2"}).err,
            "tessel: --trace: it is given more than once (tessel apply --help tells more)\n");
}

TEST(Tessel, RefusesAFileWithoutAName) {
  for (const auto& arguments : {std::vector<std::string>{"apply", ""},
                                {"diff", "", "a.json"},
                                {"diff", "a.json", ""},
                                {"dump", ""},
                                {"export", ""},
                                {"export", "a.json", "--csv", ""},
                                {"export", "a.json", "--perfetto", ""},
                                {"lint", ""},
                                {"log", ""},
                                {"lint", "a.json", "--names", ""},
                                {"toggles", "--from", ""},
                                {"stats", ""},
                                {"simulate", "--settings", ""},
                                {"simulate", "--report", ""}}) {
    const Finished run = Program().File("a.json", "{}").Run(arguments);
    EXPECT_NE(run.err.find(": expected the name of a file, not \"\""), std::string::npos) << run.err;
    EXPECT_EQ(run.status, 2);
  }
}

TEST(Tessel, ShowsWhatValuesAreAndExitStatusesAndExamplesInTheHelpOfEveryCommand) {
  std::istringstream help(Program().Run({"--help"}).out);
  std::vector<std::string> commands;
  std::string line;
  while (std::getline(help, line) && line != "Subcommands:") continue;
  while (std::getline(help, line) && !line.empty()) commands.push_back(line.substr(2, line.find(' ', 2) - 2));
  EXPECT_GE(commands.size(), 5U);
  EXPECT_TRUE(std::ranges::is_sorted(commands));
  for (const std::string& command : commands) {
    const Finished run = Program().Run({command, "--help"});
    EXPECT_EQ(run.status, 0) << command;
    EXPECT_NE(run.out.find("\n\nExit status:\n  0  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n\nExamples:\n  tessel " + command), std::string::npos) << run.out;
    // What CLI11 calls the value of an option where nothing else is said.
    for (const char* const type : {" TEXT ", " INT ", " UINT ", " FLOAT "}) {
      EXPECT_EQ(run.out.find(type), std::string::npos) << run.out;
    }
  }
}

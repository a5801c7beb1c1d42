// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tessel/version.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Program.h"
#include "Recordings.h"

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
      {{"stats", "a", "-"}, "\"-\" is one argument too many (tessel stats --help tells more)"},
      {{"stats", "a", "b"}, "\"b\" is one argument too many (tessel stats --help tells more)"},
      {{"dump", "a", "--call", "4294967296"},
       "--call: expected a whole number from 0 to 4294967295, not \"4294967296\" (tessel dump --help tells "
       "more)"},
      {{"live", "a", "--port", "65536"},
       "--port: expected a whole number from 0 to 65535, not \"65536\" (tessel live --help tells more)"},
      {{"simulate", "--settings", "a", "b"},
       "\"b\" is one argument too many (tessel simulate --help tells more)"},
      {{"simulate", "--calls", "143"},
       "--calls: expected a whole number from 1 to 142, not \"143\" (tessel simulate --help tells more)"},
      {{"simulate", "--components", "1001"},
       "--components: expected a whole number from 0 to 1000, not \"1001\" (tessel simulate --help tells "
       "more)"},
      {{"simulate", "--calls", "100", "--components", "4"},
       "--calls and --components: more than 1000 components in all"},
      {{"simulate", "--calls", "100", "--components", "3", "--report", "-"},
       "--report -: a report needs a file of its own"},
      {{"simulate", "--seconds", "86400.5"},
       "--seconds: expected a number from 0.05 to 86400, not \"86400.5\" (tessel simulate --help tells "
       "more)"},
      {{"simulate", "--seconds", "0.049"},
       "--seconds: expected a number from 0.05 to 86400, not \"0.049\" (tessel simulate --help tells more)"},
      {{"report", "-", "-", "-o", "a.html"}, "standard input can be read once only"},
      {{"declare", "-", "-", "--markdown"}, "standard input can be read once only"},
      {{"live", "-", "--port", "0"}, "FILE: it is read for each browser, which standard input cannot be"},
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

// Of several, so that the option could take one.
TEST(Tessel, TakesFilesBehindAnOptionThatMayBeRepeated) {
  for (const auto& arguments : {std::vector<std::string>{"apply", "--set", "Audio/A=1", "a.json", "a.json"},
                                {"apply", "--watch", "Audio/A", "a.json", "a.json"},
                                {"lint", "--names", "a.json", "a.json", "a.json"},
                                {"lint", "--declared", "d.json", "a.json", "a.json"},
                                {"log", "--type", "set", "a.tessel", "a.tessel"}}) {
    Program program;
    program.File("a.json", "{}").File("d.json", R"({"settings":[]})").File("a.tessel", kRecordingBegin);
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.err, "") << arguments[1];
    EXPECT_EQ(run.status, 0) << arguments[1];
  }
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

namespace {

// The lines of a paragraph of a help, which a title begins, without their descriptions.
std::vector<std::string> Names(const std::string& help, const std::string& title) {
  std::istringstream lines(help);
  std::vector<std::string> names;
  std::string line;
  while (std::getline(lines, line) && line != title) continue;
  while (std::getline(lines, line) && !line.empty()) {
    if (line[2] != ' ') names.push_back(line.substr(2, line.find("  ", 2) - 2));
  }
  return names;
}

}  // namespace

TEST(Tessel, ShowsOptionsExitStatusesAndExamplesInTheHelpOfEveryCommand) {
  const std::pair<const char*, std::vector<std::string>> commands[] = {
      {"apply",
       {"--set GROUP/NAME=VALUE", "--dump GROUP,...|MASK|all", "--watch GROUP/NAME", "--async", "--strict",
        "--json", "--record FILE", "-q,--quiet", "--trace LEVEL"}},
      {"declare", {"--header", "--json-schema", "--markdown", "-o,--output FILE"}},
      {"diff", {"--exact", "--call N", "--json"}},
      {"dump", {"--at SECONDS", "--call N"}},
      {"export", {"--csv DIR", "--perfetto FILE"}},
      {"lint", {"--names FILE", "--declared FILE", "--format text|json|github", "--json", "--github"}},
      {"live", {"--port N"}},
      {"log",
       {"--call N", "--group GROUP", "--name GLOB", "--origin GLOB", "--since SECONDS", "--until SECONDS",
        "--type recording|call|set|remove|apply|subscribe|unsubscribe|bind|deliver|statistics|lost",
        "--follow", "--json"}},
      {"report", {"-o,--output FILE"}},
      {"simulate",
       {"--seconds N", "--calls N", "--components N", "--settings FILE", "--report FILE", "--record FILE",
        "--json"}},
      {"stats", {"--kind video|audio", "--format text|csv|json", "--csv", "--json"}},
      {"toggles", {"--from FILE", "--json"}},
  };
  std::vector<std::string> inOrder;
  for (const auto& [command, options] : commands) {
    inOrder.push_back(command);
    const Finished run = Program().Run({command, "--help"});
    EXPECT_EQ(run.status, 0) << command;
    std::vector<std::string> all = {"-h,--help"};
    all.insert(all.end(), options.begin(), options.end());
    EXPECT_EQ(Names(run.out, "Options:"), all);
    EXPECT_NE(run.out.find("\n\nExit status:\n  0  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n\nExamples:\n  tessel " + inOrder.back()), std::string::npos) << run.out;
  }
  EXPECT_EQ(Names(Program().Run({"--help"}).out, "Subcommands:"), inOrder);
}

TEST(Tessel, BeginsItsHelpWithWhatItDoesAndHowItIsCalled) {
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"--help"},
       "See what the settings of a media engine's call are, and what changes them\n"
       "Usage: tessel [OPTIONS] SUBCOMMAND\n\nOptions:\n"},
      {{"dump", "--help"},
       "Print the settings that a recorded call had at a moment, as a document\n"
       "Usage: tessel dump [OPTIONS] FILE\n\nPositionals:\n  FILE  "},
      {{"log", "--help"},
       "Show what recordings say happened, a line an event\n"
       "Usage: tessel log [OPTIONS] FILE...\n\nPositionals:\n  FILE...  "},
      {{"diff", "--help"},
       "Show what a settings document changes when it is applied after another one\n"
       "Usage: tessel diff [OPTIONS] A B\n\nPositionals:\n  A  "},
  };
  for (const auto& [arguments, begin] : rows) {
    const std::string help = Program().Run(arguments).out;
    EXPECT_TRUE(help.starts_with(begin)) << help;
  }
}

TEST(Tessel, ListsTheGroupsInLinesOfSeven) {
  EXPECT_NE(Program().Run({"apply", "--help"}).out.find(R"(
Groups:
  Common Feature Metrics Audio AudioSlide Video VideoSlide
  Application Gamestate AudioSi Transmission TAOnly UnitTest

)"),
            std::string::npos);
}

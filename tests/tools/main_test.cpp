#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Program.h"

TEST(Tessel, PrintsItsVersion) {
  const Finished run = Program().Run({"--version"});
  EXPECT_EQ(run.out, "tessel " TESSEL_VERSION "\n");
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

TEST(Tessel, NamesACommandThatItDoesNotHave) {
  const Finished run = Program().Run({"aply", "a.json"});
  EXPECT_EQ(run.err, "tessel: there is no command \"aply\" (tessel --help lists them)\n");
  EXPECT_EQ(run.status, 2);
}

TEST(Tessel, TellsOfEveryCommandHowItEndsAndHowItIsUsed) {
  std::istringstream help(Program().Run({"--help"}).out);
  std::vector<std::string> commands;
  std::string line;
  while (std::getline(help, line) && line != "Subcommands:") continue;
  while (std::getline(help, line) && !line.empty()) commands.push_back(line.substr(2, line.find(' ', 2) - 2));
  EXPECT_GE(commands.size(), 5U);
  for (const std::string& command : commands) {
    const Finished run = Program().Run({command, "--help"});
    EXPECT_EQ(run.status, 0) << command;
    EXPECT_NE(run.out.find("\n\nExit status:\n  0  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n\nExamples:\n  tessel " + command), std::string::npos) << run.out;
  }
}

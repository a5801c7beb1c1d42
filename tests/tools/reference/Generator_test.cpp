// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>

#include "../Program.h"

TEST(Generator, WritesAPageForEachCommandAndBothCompletions) {
  Program program;
  const Finished run = program.Run({"all folders/made"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  const std::string folder = "all folders/made/";
  EXPECT_NE(program.Contents(folder + "man1/tessel.1").find("\n.SH COMMANDS\n"), std::string::npos);
  for (const std::string command : {"apply", "live", "lint"}) {
    const std::string page = program.Contents(folder + "man1/tessel-" + command + ".1");
    EXPECT_NE(page.find("\n.SH SYNOPSIS\n\\fBtessel " + command + "\\fR"), std::string::npos) << page;
  }
  const std::string bash = program.Contents(folder + "bash/tessel");
  EXPECT_TRUE(bash.ends_with("\ncomplete -F _tessel tessel\n")) << bash;
  const std::string zsh = program.Contents(folder + "zsh/_tessel");
  EXPECT_TRUE(zsh.starts_with("#compdef tessel\n")) << zsh;
}

TEST(Generator, TakesOneFolder) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"a", "b"}}) {
    Program program;
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "usage: tessel_reference FOLDER\n");
    EXPECT_FALSE(std::filesystem::exists(program.Path("a")));
  }
}

TEST(Generator, SaysWhatCannotBeWritten) {
  Program program;
  program.File("file", "");
  const Finished below = program.Run({"file/below"});
  EXPECT_EQ(below.status, 1);
  EXPECT_TRUE(below.err.starts_with("tessel_reference: ")) << below.err;
  std::filesystem::create_directories(program.Path("taken/bash/tessel"));
  const Finished taken = program.Run({"taken"});
  EXPECT_EQ(taken.status, 1);
  EXPECT_EQ(taken.err, "tessel_reference: taken/bash/tessel cannot be written\n");
}

// SPDX-License-Identifier: Apache-2.0
#include "TextFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "Recordings.h"

TEST(TextFile, IsRefusedWhenItIsTooLarge) {
  Program program;
  program.File("huge.json", "{}");
  std::filesystem::resize_file(program.Path("huge.json"), (std::uintmax_t{1} << 30) + 1);
  const Finished run = program.Run({"lint", "huge.json"});
  EXPECT_EQ(run.err, "huge.json: cannot be read: more than 1 GiB\n");
  EXPECT_EQ(run.status, 2);
}

TEST(TextFile, IsClosedOnceItIsRead) {
  Program program;
  program.File("a.json", "{}");
  const auto before = OpenFiles();
  EXPECT_EQ(ReadFile(program.Path("a.json")), "{}");
  EXPECT_EQ(OpenFiles(), before);
}

TEST(TextFile, IsRefusedWhenItIsNoFile) {
  for (const auto& arguments : {std::vector<std::string>{"apply", "."},
                                {"lint", "."},
                                {"lint", "a.json", "--names", "."},
                                {"stats", "."}}) {
    const Finished run = Program().File("a.json", "{}").Run(arguments);
    EXPECT_EQ(run.err, ".: cannot be read: Is a directory\n");
    EXPECT_EQ(run.status, 2);
  }
}

// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "Program.h"

namespace {
std::string Example(const std::string& name) {
  return TESSEL_EXAMPLE_SETTINGS "/" + name;
}
}  // namespace

TEST(ExampleSettings, AreAppliedWithoutAFinding) {
  const Finished run = Program().Run(
      {"apply", "--strict", Example("base.json"), Example("low-bandwidth.json"), Example("lab.json")});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.out.find("\n  110 new\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\n  1 new, 29 changed, 1 unchanged\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\n  changed  Feature/EnableMusicDetection: \"1\" -> \"false\"\n"),
            std::string::npos);
}

TEST(ExampleSettings, FillEveryGroup) {
  const Finished run = Program().Run({"apply", "-q", Example("base.json"), "--dump", "all"});
  EXPECT_EQ(run.out.find("[]"), std::string::npos) << run.out;
}

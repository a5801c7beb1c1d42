// SPDX-License-Identifier: Apache-2.0
// Runs one fuzz target over its kept inputs. A property that does not hold ends the process.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Path = std::filesystem::path;

std::vector<Path> KeptInputs() {
  std::vector<Path> files;
  for (const char* folder : {FUZZ_INPUTS, FUZZ_REGRESSIONS}) {
    if (!std::filesystem::exists(folder)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string TestName(const testing::TestParamInfo<Path>& info) {
  std::string name =
      info.param.parent_path().parent_path().filename().string() + "_" + info.param.filename().string();
  std::replace_if(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

// In a buffer of its very size, so that reading past the end shows.
int Feed(const std::vector<std::uint8_t>& input) {
  const std::vector<std::uint8_t> exact(input);
  return LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

class Replay : public testing::TestWithParam<Path> {};

TEST_P(Replay, HoldsForTheKeptInputAndItsCuts) {
  std::ifstream file(GetParam(), std::ios::binary);
  ASSERT_TRUE(file.is_open());
  const std::vector<std::uint8_t> input{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(Feed(input), 0);
  // A cut input leaves out its end: another case for nothing.
  constexpr std::size_t kMostCuts = 16;
  for (std::size_t cut = 1; cut <= kMostCuts; ++cut) {
    const auto kept = static_cast<std::ptrdiff_t>(input.size() * (cut - 1) / kMostCuts);
    EXPECT_EQ(Feed({input.begin(), input.begin() + kept}), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Kept, Replay, testing::ValuesIn(KeptInputs()), TestName);

}  // namespace

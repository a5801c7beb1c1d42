// SPDX-License-Identifier: Apache-2.0
#include "tessel/trace.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

namespace {

struct LabelRow {
  const char* signature;
  const char* label;
};

class FunctionLabels : public ::testing::TestWithParam<LabelRow> {};

TEST_P(FunctionLabels, AreTheLastWordBeforeTheParameters) {
  EXPECT_EQ(GetParam().label, ExtractClassFunctionName(GetParam().signature));
}

INSTANTIATE_TEST_SUITE_P(
    Table, FunctionLabels,
    ::testing::Values(
        LabelRow{"virtual int32_t kalStore::KalConfig::SetKalConfig(kalStore::KalConfigGroup, const char*, "
                 "kalStore::ConfigValue, bool, bool)",
                 "kalStore::KalConfig::SetKalConfig"},
        LabelRow{"kalStore::KalConfig::KalConfig(uint32_t)", "kalStore::KalConfig::KalConfig"},
        LabelRow{"virtual kalStore::KalConfig::~KalConfig()", "kalStore::KalConfig::~KalConfig"},
        LabelRow{"int main()", "main"}, LabelRow{"f()", "f"}, LabelRow{"f(", "f"},
        LabelRow{"bool kal::Less::operator()(int, int) const", "kal::Less::operator"},
        LabelRow{"kalStore::KalConfig::fireEvents(int)::<lambda(const int&)>",
                 "kalStore::KalConfig::fireEvents"},
        LabelRow{"auto kalStore::KalConfig::fireEvents(int)::(anonymous class)::operator()() const",
                 "kalStore::KalConfig::fireEvents"},
        LabelRow{"std::vector<int, std::allocator<int> > make(std::map<int, long> x)", "make"},
        LabelRow{"no parentheses at all", "no parentheses at all"}, LabelRow{"", ""}, LabelRow{" ", " "},
        LabelRow{"(anonymous)", "(anonymous)"}, LabelRow{"void (*f)(int)", "void (*f)(int)"},
        LabelRow{" (", " ("}, LabelRow{"a b\tc(", "b\tc"}));

TEST(ExtractClassFunctionName, NamesTheErrorForANullSignature) {
  EXPECT_EQ("ErrorName", ExtractClassFunctionName(nullptr));
  EXPECT_EQ("ErrorName", kalStore::ExtractClassFunctionName(nullptr));
}

TEST(ExtractClassFunctionName, KeepsALabelOfAnyLength) {
  const std::string name(5000, 'n');
  EXPECT_EQ(name, ExtractClassFunctionName(("int " + name + "(int)").c_str()));
}

TEST(GetCurrentModuleName, IsUtilUnlessANameIsGiven) {
  EXPECT_STREQ("UTIL", GetCurrentModuleName(nullptr));
  EXPECT_STREQ("UTIL", GetCurrentModuleName(""));
  EXPECT_STREQ("X", GetCurrentModuleName("X"));
}

TEST(GetCurrentModuleName, ReturnsTheNameItselfAndOneBufferOtherwise) {
  const char name[] = "Mine";
  EXPECT_EQ(name, GetCurrentModuleName(name));
  EXPECT_EQ(GetCurrentModuleName(nullptr), GetCurrentModuleName(""));
}

TEST(GetCurrentModuleName, IsTheSameForThreadsThatAskAtOnce) {
  const char* names[4] = {};
  std::vector<std::thread> threads;
  for (const char*& name : names) threads.emplace_back([&name] { name = GetCurrentModuleName(nullptr); });
  for (std::thread& thread : threads) thread.join();
  for (const char* name : names) EXPECT_EQ(names[0], name);
}

}  // namespace

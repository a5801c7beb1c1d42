// SPDX-License-Identifier: Apache-2.0
#include "reference/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "ConfigPath.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FieldsAre;
using testing::IsEmpty;

// The option or argument of a program that has no other.
template <class Add>
Parameter ParameterOf(Add&& add) {
  CLI::App app;
  app.set_help_flag();
  add(app);
  const std::vector<Parameter> parameters = CommandLineOf(app).program.parameters;
  EXPECT_EQ(parameters.size(), 1U);
  return parameters.empty() ? Parameter{} : parameters.front();
}

std::vector<HelpSection> SectionsOf(const std::string& footer) {
  CLI::App app;
  app.footer(footer);
  return CommandLineOf(app).program.sections;
}

Values ValuesOf(const std::string& placeholder) {
  return ValuesOf(Parameter{{}, placeholder, "", false, false, false});
}

TEST(CommandLine, HasTheProgramAndItsCommandsInOrder) {
  CLI::App app("What it shows", "sample");
  app.set_version_flag("--version", "sample 2.1", "Print the version");
  app.footer("Of the program.");
  CLI::App* const list = app.add_subcommand("list", "List names");
  list->add_flag("--all");
  list->footer("Of the list.");
  app.add_subcommand("draw", "Draw shapes");
  const CommandLine line = CommandLineOf(app);
  EXPECT_EQ(line.version, "sample 2.1");
  EXPECT_EQ(line.program.name, "sample");
  EXPECT_EQ(line.program.description, "What it shows");
  ASSERT_EQ(line.program.parameters.size(), 2U);
  EXPECT_THAT(line.program.parameters[0].names, ElementsAre("-h", "--help"));
  EXPECT_THAT(line.program.parameters[1].names, ElementsAre("--version"));
  EXPECT_THAT(line.program.sections, ElementsAre(FieldsAre("", ElementsAre("Of the program."))));
  ASSERT_EQ(line.commands.size(), 2U);
  EXPECT_EQ(line.commands[0].name, "list");
  EXPECT_EQ(line.commands[0].description, "List names");
  ASSERT_EQ(line.commands[0].parameters.size(), 2U);
  EXPECT_THAT(line.commands[0].parameters[1].names, ElementsAre("--all"));
  EXPECT_THAT(line.commands[0].sections, ElementsAre(FieldsAre("", ElementsAre("Of the list."))));
  EXPECT_EQ(line.commands[1].name, "draw");
}

TEST(CommandLine, LeavesOutHiddenCommandsAndOptions) {
  CLI::App app;
  app.set_help_flag();
  app.add_flag("--hidden")->group("");
  app.add_flag("--shown")->group("Rare options");
  app.add_subcommand("hidden")->group("");
  app.add_subcommand("shown")->group("Rare commands");
  const CommandLine line = CommandLineOf(app);
  ASSERT_EQ(line.program.parameters.size(), 1U);
  EXPECT_THAT(line.program.parameters[0].names, ElementsAre("--shown"));
  ASSERT_EQ(line.commands.size(), 1U);
  EXPECT_EQ(line.commands[0].name, "shown");
}

TEST(CommandLine, HasAFlagWithoutAValue) {
  bool isQuiet = false;
  const auto add = [&](CLI::App& app) { app.add_flag("-q,--quiet", isQuiet, "Print nothing"); };
  EXPECT_THAT(ParameterOf(add),
              FieldsAre(ElementsAre("-q", "--quiet"), "", "Print nothing", false, false, false));
}

TEST(CommandLine, HasShortNamesBeforeLongOnes) {
  const auto add = [](CLI::App& app) { app.add_flag("--recursive,-r,--all,-R"); };
  EXPECT_THAT(ParameterOf(add).names, ElementsAre("-r", "-R", "--recursive", "--all"));
}

TEST(CommandLine, HasTheValueOfAnOption) {
  std::string file;
  const auto add = [&](CLI::App& app) {
    app.add_option("-o,--output", file, "Write here")->type_name("FILE");
  };
  EXPECT_THAT(ParameterOf(add),
              FieldsAre(ElementsAre("-o", "--output"), "FILE", "Write here", false, false, false));
}

TEST(CommandLine, HasARequiredOption) {
  int number = 0;
  const auto add = [&](CLI::App& app) { app.add_option("--at", number, "When")->type_name("N")->required(); };
  EXPECT_THAT(ParameterOf(add), FieldsAre(ElementsAre("--at"), "N", "When", false, true, false));
}

TEST(CommandLine, HasARepeatableOption) {
  std::vector<std::string> names;
  const auto add = [&](CLI::App& app) { app.add_option("--name", names, "One more")->type_name("NAME"); };
  EXPECT_THAT(ParameterOf(add), FieldsAre(ElementsAre("--name"), "NAME", "One more", false, false, true));
}

TEST(CommandLine, HasAnArgumentByItsPlaceholder) {
  std::string file;
  const auto add = [&](CLI::App& app) { app.add_option("FILE", file, "What to read")->type_name("FILE"); };
  EXPECT_THAT(ParameterOf(add), FieldsAre(ElementsAre("FILE"), "FILE", "What to read", true, false, false));
}

TEST(CommandLine, HasARequiredArgumentOfSeveralWords) {
  std::vector<std::string> files;
  const auto add = [&](CLI::App& app) { app.add_option("FILE", files, "What to read")->required(); };
  const Parameter parameter = ParameterOf(add);
  EXPECT_TRUE(parameter.isArgument);
  EXPECT_TRUE(parameter.isRequired);
  EXPECT_TRUE(parameter.isRepeatable);
}

TEST(HelpSections, AreNoneOfAnEmptyFooter) {
  EXPECT_THAT(SectionsOf(""), IsEmpty());
  EXPECT_THAT(SectionsOf("\n\n"), IsEmpty());
}

TEST(HelpSections, BeginWithATitleThatEndsInAColon) {
  EXPECT_THAT(SectionsOf("Exit status:\n  0  done\n  1  failed"),
              ElementsAre(FieldsAre("Exit status", ElementsAre("0  done", "1  failed"))));
}

TEST(HelpSections, AreRunningTextWithoutATitle) {
  EXPECT_THAT(SectionsOf("What it does\nwith this:\nand that."),
              ElementsAre(FieldsAre("", ElementsAre("What it does", "with this:", "and that."))));
}

TEST(HelpSections, ArePartedByEmptyLines) {
  EXPECT_THAT(SectionsOf("\nOne\n\n\nTwo:\n  2\n\nThree"),
              ElementsAre(FieldsAre("", ElementsAre("One")), FieldsAre("Two", ElementsAre("2")),
                          FieldsAre("", ElementsAre("Three"))));
}

TEST(HelpSections, GoOnAfterAnEmptyLineWithIndentation) {
  EXPECT_THAT(SectionsOf("Examples:\n  one\n\n\n  two\n  three"),
              ElementsAre(FieldsAre("Examples", ElementsAre("one", "", "two", "three"))));
}

TEST(HelpSections, BeginWithNoEmptyLine) {
  EXPECT_THAT(SectionsOf("Examples:\n\n  one"), ElementsAre(FieldsAre("Examples", ElementsAre("one"))));
}

TEST(HelpSections, HaveNoTitleWhereTheFirstLineIsIndented) {
  EXPECT_THAT(SectionsOf("\n  Indented:\n  text"),
              ElementsAre(FieldsAre("", ElementsAre("Indented:", "text"))));
}

TEST(HelpSections, KeepWhatIsIndentedFurther) {
  EXPECT_THAT(SectionsOf("Examples:\n  one\n    deep\n one space\nnone"),
              ElementsAre(FieldsAre("Examples", ElementsAre("one", "  deep", " one space", "none"))));
}

TEST(Values, AreFilesForTheirPlaceholder) {
  EXPECT_THAT(ValuesOf("FILE"), FieldsAre(true, false, IsEmpty()));
}

TEST(Values, AreUnknownForAnyOtherWord) {
  for (const char* const placeholder : {"", "N", "FILES", "SECONDS", "text", "GROUP", "GROUP,..."}) {
    EXPECT_THAT(ValuesOf(placeholder), FieldsAre(false, false, IsEmpty())) << placeholder;
  }
}

TEST(Values, AreTheWordsThatAreNotInCapitals) {
  EXPECT_THAT(ValuesOf("text|json|N"), FieldsAre(false, false, ElementsAre("text", "json")));
  EXPECT_THAT(ValuesOf("a|A|z|Z|0x|1"), FieldsAre(false, false, ElementsAre("a", "z", "0x")));
}

TEST(Values, BeginWithAGroup) {
  std::vector<std::string> beginnings;
  for (const std::string& group : GroupNames()) beginnings.push_back(group + "/");
  EXPECT_THAT(ValuesOf("GROUP/NAME"), FieldsAre(false, true, ElementsAreArray(beginnings)));
  EXPECT_THAT(ValuesOf("GROUP/NAME=VALUE|none"), FieldsAre(false, true, ElementsAreArray(beginnings)));
}

TEST(Values, AreGroupsBeforeOtherWords) {
  std::vector<std::string> words(GroupNames().begin(), GroupNames().end());
  words.emplace_back("all");
  EXPECT_THAT(ValuesOf("GROUP,...|MASK|all"), FieldsAre(false, false, ElementsAreArray(words)));
}

TEST(Words, AreJoinedBySpaces) {
  EXPECT_EQ(Joined({}), "");
  EXPECT_EQ(Joined({"one"}), "one");
  EXPECT_EQ(Joined({"one", "two", "three"}), "one two three");
}

TEST(Words, AreQuotedForAShell) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "''"}, {"a b", "'a b'"}, {"$a\\\"`", "'$a\\\"`'"}, {"it's '", R"('it'\''s '\''')"}};
  for (const auto& [text, quoted] : rows) EXPECT_EQ(ShellQuoted(text), quoted);
}

}  // namespace

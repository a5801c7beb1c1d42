#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "Program.h"

TEST(Printable, KeepsWellFormedTextAndEscapesTheRest) {
  const std::tuple<std::string, std::string> texts[] = {
      {"plain", "plain"},
      {"\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xa7", "\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xa7"},
      {"\xff\xfe", "\\u00ff\\u00fe"},
      {"\xc3", "\\u00c3"},
      {"\x80", "\\u0080"},
      {"\xc0\xaf", "\\u00c0\\u00af"},                        // Longer than need be.
      {"\xe0\x80\xaf", "\\u00e0\\u0080\\u00af"},             //
      {"\xed\xa0\x80", "\\u00ed\\u00a0\\u0080"},             // A surrogate.
      {"\xf4\x90\x80\x80", "\\u00f4\\u0090\\u0080\\u0080"},  // Past the last code point.
      {"\xe2\x82z", "\\u00e2\\u0082z"},
      {"\x1b[31m\x7f", "\\u001b[31m\\u007f"},
      {"\xc2\x9b", "\\u00c2\\u009b"},  // A control character that some terminals obey.
      {"\b\f\n\r\t\x01", "\\b\\f\\n\\r\\t\\u0001"},
      {"back\\slash", "back\\\\slash"},
  };
  for (const auto& [text, shown] : texts) {
    const Finished run = Program().Input("{}").Run({"apply", "-", "--set", "Audio/" + text + "=" + text});
    EXPECT_EQ(run.out,
              "<stdin>\n  no entries\n--set\n  new      Audio/" + shown + ": \"" + shown + "\"\n  1 new\n");
  }
}

TEST(Printable, QuotesReadBackToTheSameBytes) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  Program program;
  program.Input("{}");
  const std::string shown = program.Run({"apply", "-", "--set", "Audio/X=" + bytes}).out;
  const std::size_t start = shown.find("Audio/X: ") + 9;
  const std::string quoted = shown.substr(start, shown.find('\n', start) - start);

  program.File("a.json", "{\"Audio\":[{\"key\":\"X\",\"value\":" + quoted + "}]}");
  const Finished run = program.Run({"apply", "a.json", "--set", "Audio/X=" + bytes});
  EXPECT_TRUE(run.out.ends_with("--set\n  1 unchanged\n")) << run.out;
}

TEST(Printable, LeavesTheDumpAsTheLibraryWritesIt) {
  const std::string text = "{\"Audio\":[{\"key\":\"\xff\xc2\x9b\",\"value\":\"\x7f\x80\"}]}";
  EXPECT_EQ(Program().Input(text).Run({"apply", "-", "-q", "--dump", "8"}).out, text + "\n");
}

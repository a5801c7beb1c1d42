// SPDX-License-Identifier: Apache-2.0
#include "Printable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Program.h"

TEST(Printable, KeepsWellFormedUtf8AndEscapesTheRest) {
  const std::tuple<std::string, std::string> texts[] = {
      {"plain", "plain"},
      {"\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xa7", "\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xa7"},
      {"\u00a1\u07ff\u0800\uffff\U00010000\U0010ffff", "\u00a1\u07ff\u0800\uffff\U00010000\U0010ffff"},
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
      {"\u202egnp\u2066", "\\u00e2\\u0080\\u00aegnp\\u00e2\\u0081\\u00a6"},  // Turn the direction around.
      {"\u200e\u200f\u061c",                                                 // Marks of a direction.
       "\\u00e2\\u0080\\u008e\\u00e2\\u0080\\u008f\\u00d8\\u009c"},
      {"\u061b\u061d\u200d\u2010", "\u061b\u061d\u200d\u2010"},  // What is beside them is shown.
      {"\u2028", "\\u00e2\\u0080\\u00a8"},                       // Ends a line.
      {"\b\f\n\r\t\x01", "\\b\\f\\n\\r\\t\\u0001"},
      {"back\\slash", "back\\\\slash"},
  };
  for (const auto& [text, shown] : texts) {
    const Finished run = Program().Input("{}").Run({"apply", "-", "--set", "Audio/" + text + "=" + text});
    EXPECT_EQ(run.out,
              "<stdin>\n  no entries\n--set\n  new      Audio/" + shown + ": \"" + shown + "\"\n  1 new\n");
  }
}

// What the last code point of a range, or the one beside it, becomes in a line, in JSON and in a page.
TEST(Printable, KnowsWhereWhatIsShownBeginsAndEnds) {
  const auto byBytes = [](std::string_view bytes) {
    std::string escapes;
    for (const char byte : bytes) {
      char escape[7];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(byte));
      escapes += escape;
    }
    return escapes;
  };
  // Controls: as JSON, with their code point.
  for (const auto& [text, code] : {std::pair<std::string, const char*>{"\x7f", "\\u007f"},
                                   {"\u0080", "\\u0080"},
                                   {"\u009f", "\\u009f"},
                                   {"\u061c", "\\u061c"},
                                   {"\u200e", "\\u200e"},
                                   {"\u200f", "\\u200f"},
                                   {"\u2028", "\\u2028"},
                                   {"\u202e", "\\u202e"},
                                   {"\u2066", "\\u2066"},
                                   {"\u2069", "\\u2069"}}) {
    EXPECT_EQ(PrintableJson(text + "x"), byBytes(text) + "x");
    EXPECT_EQ(StandardJson(text + "x"), code + std::string("x"));
    EXPECT_EQ(PageJson(text + "x"), "\"" + text + "x\"");
  }
  for (const std::string text :
       {" ", "~", "\u00a0", "\u061b", "\u061d", "\u200d", "\u2010", "\u2027", "\u202f", "\u2065", "\u206a",
        "\u07ff", "\u0800", "\ud7ff", "\ue000", "\uffff", "\U00010000", "\U0010ffff"}) {
    EXPECT_EQ(PrintableJson(text + "x"), text + "x");
    EXPECT_EQ(StandardJson(text + "x"), text + "x");
    EXPECT_EQ(PageJson(text + "x"), "\"" + text + "x\"");
  }
  // No UTF-8: single bytes, one too many, longer than need be, surrogates, past the last code point.
  for (const std::string text :
       {"\x80", "\xbf", "\xc1\xbf", "\xc3\xc3", "\xe2\x82", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xed\xbf\xbf",
        "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"}) {
    EXPECT_EQ(PrintableJson(text + "x"), byBytes(text) + "x");
    EXPECT_EQ(StandardJson(text + "x"), byBytes(text) + "x");
    EXPECT_EQ(PageJson(text + "x"), "\"" + byBytes(text) + "x\"");
  }
  // Up to the end of the text, whatever is behind it.
  for (const std::string_view text : {"\u00e9", "\u20ac", "\U0001f3a7"}) {
    for (std::size_t size = 1; size < text.size(); ++size) {
      EXPECT_EQ(PrintableJson(text.substr(0, size)), byBytes(text.substr(0, size)));
    }
  }
  EXPECT_EQ(PageJson("</\"\\\x1f\n"), "\"\\u003c/\\\"\\\\\\u001f\\n\"");
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

TEST(Printable, ShowsTheSameDumpOnATerminalWithoutWhatItWouldObey) {
  const std::string text = "{\"Audio\":[{\"key\":\"\\\\\",\"value\":\"\x7f\xc2\x9b\x80\u00e9\\\"\\u001b\"}]}";
  const Finished run =
      Program().Input(text).To(Program::Output::kTerminal).Run({"apply", "-", "-q", "--dump", "8"});
  EXPECT_EQ(
      run.out,
      "{\"Audio\":[{\"key\":\"\\\\\",\"value\":\"\\u007f\\u00c2\\u009b\\u0080\u00e9\\\"\\u001b\"}]}\r\n");
  EXPECT_EQ(Program().Input(run.out).Run({"apply", "-", "-q", "--dump", "8"}).out,
            Program().Input(text).Run({"apply", "-", "-q", "--dump", "8"}).out);
}

TEST(Printable, HoldsForEverythingThatACommandShows) {
  const std::string evil = "\x1b]0;owned\x07\n[UTIL 0] forged\x7f\xc2\x9b\x80";
  const std::string json = R"(\u001b]0;owned\u0007\n[UTIL 0] forged\u007f\u00c2\u009b\u0080)";
  const std::string entry = R"({"key":")" + json + R"(","value":")" + json + "\"}";
  const std::vector<std::string> commandLines[] = {
      {"apply", "a.json", "--trace", "2", "--watch", "Audio/*", "--dump", "all"},
      {"apply", "a.json", "--json", "--async", "--watch", "Audio/*"},
      {"apply", evil},
      {"apply", "a.json", "--set", evil},
      {"apply", "a.json", "--set", "Audio/" + evil + "=" + evil},
      {"apply", "a.json", "--watch", evil},
      {"apply", "a.json", "--dump", evil},
      {"apply", "a.json", "--trace", evil},
      {"apply", "a.json", "--" + evil},
      {"apply", "a.json", "-" + evil},
      {"diff", "empty.json", "a.json"},
      {"diff", "a.json", "empty.json", evil},
      {"lint", "a.json", "--names", "names.json"},
      {"lint", "a.json", "--names", "names.json", "--json"},
      {"lint", "a.json", "--names", "names.json", "--github"},
      {"lint", "named\x1b.json", "--github"},
      {"lint", "a.json", "--format", evil},
      {"toggles", evil},
      {"toggles", "audio", "--from", evil},
      {"toggles", "audio", "--from", "a.json", evil},
      {"stats", evil},
      {"simulate", "--seconds", evil},
      {"simulate", "--seconds", "0.05", "--report", evil + "/x"},
      {"simulate", "--seconds", "0.05", "--settings", "a.json"},
      {evil},
  };
  for (std::vector<std::string> arguments : commandLines) {
    Program program;
    program
        .File("a.json", R"({"Audio":[)" + entry + R"(],"Feature":[)" + entry + R"(],")" + json + R"(":[]})")
        .File("empty.json", "{}")
        .File("named\x1b.json", "")
        .File("names.json", R"({"Audio":[")" + json + R"(x"]})");
    const Finished run = program.To(Program::Output::kTerminal).Environment("NO_COLOR=1").Run(arguments);
    for (const char* raw : {"\x1b", "\x07", "\x7f", "\xc2\x9b", "\x80", "\n[UTIL 0] forged"}) {
      EXPECT_EQ(run.out.find(raw), std::string::npos) << arguments.front() << ": " << run.out;
      EXPECT_EQ(run.err.find(raw), std::string::npos) << arguments.front() << ": " << run.err;
    }
  }
}

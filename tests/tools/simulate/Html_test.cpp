// SPDX-License-Identifier: Apache-2.0
#include "simulate/Html.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using simulate::HtmlText;

TEST(Html, LetsNoStringBecomeMarkup) {
  EXPECT_EQ(HtmlText("a<b>&\"c\"'d'"), "a&lt;b&gt;&amp;&quot;c&quot;&#39;d&#39;");
  EXPECT_EQ(HtmlText("&amp;"), "&amp;amp;");
  EXPECT_EQ(HtmlText(""), "");
}

TEST(Html, EscapesWhatIsNoUtf8) {
  EXPECT_EQ(HtmlText("\xff<"), "\\u00ff&lt;");
  EXPECT_EQ(HtmlText(std::string("\0\n", 2)), "\\u0000\\n");
  EXPECT_EQ(HtmlText("µs\u202f"), "µs\u202f");
}

TEST(Html, CutsALongStringBetweenCharacters) {
  EXPECT_EQ(HtmlText(std::string(400, 'x')), std::string(400, 'x'));
  EXPECT_EQ(HtmlText(std::string(401, 'x')), std::string(400, 'x') + "\u2026 (401 bytes)");
  for (const char* letter : {"\u00e9", "\u20ac", "\U0001F600"}) {
    std::string text(399, 'x');
    for (int i = 0; i < 5; ++i) text += letter;
    EXPECT_EQ(HtmlText(text), std::string(399, 'x') + "\u2026 (" + std::to_string(text.size()) + " bytes)");
  }
}

TEST(Html, CutsALongStringOfContinuationBytesToo) {
  const std::string text(500, '\x80');
  const std::string shown = HtmlText(text);
  EXPECT_EQ(shown.find("\\u0080"), 0U);
  EXPECT_NE(shown.find("(500 bytes)"), std::string::npos);
}

}  // namespace

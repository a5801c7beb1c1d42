#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "Program.h"
#include "tessel/json.h"

namespace {

// The seconds of processor time that `work` costs those whom `who` names.
template <class Function>
double Cost(__rusage_who who, Function work) {
  const auto used = [who] {
    rusage usage{};
    ::getrusage(who, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
  };
  const double before = used();
  work();
  return used() - before;
}

// 100,000 entries in five groups; every tenth value is another one with each `kind`.
std::string Document(const std::string& kind) {
  std::string text = "{";
  for (const char* group : {"Common", "Metrics", "Audio", "Video", "Transmission"}) {
    text += (text.size() == 1 ? "\"" : ",\"") + std::string(group) + "\":[";
    for (int number = 0; number < 20000; ++number) {
      text += (number == 0 ? "" : ", ") + ("{\"key\": \"Setting" + std::to_string(number)) + group +
              "\", \"value\": \"" + (number % 10 == 0 ? kind : "same") + "\"}";
    }
    text += ']';
  }
  return text + '}';
}

}  // namespace

// About as long, when measured with nothing else to do; a busy machine costs some, and what grows with the
// square of the entries a hundred times as much.
TEST(HugeDocuments, AreCheckedAndComparedInAFewTimesWhatParsingThemTakes) {
  const std::string a = Document("a");
  const std::string b = Document("b");
  const double parsing = Cost(RUSAGE_SELF, [&] {
    ASSERT_EQ(json::Deserialize(a).GetType(), json::ObjectVal);
    ASSERT_EQ(json::Deserialize(b).GetType(), json::ObjectVal);
  });
  Program program;
  program.File("a.json", a).File("b.json", b);
  program.File("toggles.json", "{\"Feature\":" + a.substr(a.find('[')));
  const auto cost = [&](const std::vector<std::string>& arguments, int status) {
    return Cost(RUSAGE_CHILDREN, [&] { EXPECT_EQ(program.Run(arguments).status, status); });
  };
  constexpr double kFew = 8;
  EXPECT_LT(cost({"lint", "a.json", "b.json"}, 0), kFew * parsing);
  EXPECT_LT(cost({"lint", "a.json", "--names", "b.json"}, 0), kFew * parsing);
  EXPECT_LT(cost({"lint", "toggles.json"}, 1), kFew * parsing);
  EXPECT_LT(cost({"diff", "a.json", "b.json"}, 1), kFew * parsing);
  EXPECT_LT(cost({"diff", "--exact", "a.json", "b.json"}, 1), kFew * parsing);
}

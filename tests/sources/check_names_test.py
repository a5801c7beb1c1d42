#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""check_names.py names each function that breaks the rule, and no other."""

import tempfile
import unittest
from pathlib import Path

import check_names


class CheckNames(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)

    def faults(self, *lines, file="tests/a.cpp"):
        path = self.tree / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(f"{line}\n" for line in lines))
        return check_names.check(self.tree)

    def test_functions_are_camel_case(self):
        self.assertEqual(self.faults("namespace {", "int Good() { return 1; }", "}",
                                     "int Better() { return Good(); }"), [])
        self.assertEqual(self.faults("namespace {", "", "int bad() { return 1; }", "}"),
                         ["tests/a.cpp:3: bad must be CamelCase"])
        self.assertEqual(self.faults("namespace kalStore {", "static int bad();", "}"),
                         ["tests/a.cpp:2: bad must be CamelCase"])
        self.assertEqual(self.faults("template <class T>", "std::vector<T> bad(T value) {", "  return {value};", "}"),
                         ["tests/a.cpp:2: bad must be CamelCase"])

    def test_public_methods_are_camel_case(self):
        self.assertEqual(self.faults("struct Stage {", "  void Good() {}", "  int begin() const;", "};"), [])
        self.assertEqual(self.faults("struct Stage {", "  void bad() {}", "};"),
                         ["tests/a.cpp:2: bad must be CamelCase"])
        self.assertEqual(self.faults("class Stage {", " public:", "  int bad() const;", "};"),
                         ["tests/a.cpp:3: bad must be CamelCase"])

    def test_other_methods_may_be_either(self):
        self.assertEqual(self.faults("class Stage {", "  void helper();", " protected:", "  void Helper() {}", "};",
                                     "void Stage::helper() {}"), [])

    def test_others_names_stay(self):
        self.assertEqual(self.faults("struct Event : ICmEvent {", "  void run() override;", "  bool operator==(int);",
                                     "};", "int main() {}"), [])

    def test_calls_variables_and_tests_are_no_functions(self):
        self.assertEqual(self.faults("TEST(Name, IsASentence) {", "  const auto value = json::deserialize(text);",
                                     "  const auto call = [](int x) { return x; };", "  std::vector<int> values(3);",
                                     "  for (int i : values) call(i);", "}"), [])

    def test_all_folders_are_read(self):
        for file in ("tests/tools/a.h", "fuzz/a.cpp", "bench/support/a.h", "examples/a/main.cpp", "model/a.cpp"):
            self.assertEqual(self.faults("", "int bad();", file=file), [f"{file}:2: bad must be CamelCase"])
            (self.tree / file).unlink()


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A schema is a program that can be each of its mutants, and is the original."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import places  # pylint: disable=wrong-import-position
from schema import Schema  # pylint: disable=wrong-import-position

RUNTIME = Path(__file__).parent / "runtime"
# The lines that change, and what the program then prints instead of "8 6 {a1,b2} 3".
PROGRAM = r"""#include <cstdio>
#include <string>
constexpr int kTwice = 4 + 4;
constexpr int Half(int number) { return number / 2; }
static_assert(Half(4) == 2);
int Sum(int number, bool isLong = false) {
  int sum = 0;
  for (int at = 1; at <= number; ++at) sum += number > 9 ? 100 : at;
  return isLong ? -sum : sum;
}
std::string Joined(const std::string& name) {
  std::string text;
  text += '{' + name;
  text += "1,b2";  // The "end".
  text.push_back('}');
  return text;
}
int main() {
  const char* const name = "a";
  int count = 0;
  if (name != nullptr && *name == 'a') count = 3;
  std::printf("%d %d %s %d\n", kTwice, Sum(Half(6)), Joined(name).c_str(), count);
}
"""
BECOMES = {
    "constexpr int kTwice = 4 - 4;": "0 6 {a1,b2} 3",
    "constexpr int kTwice = 5 + 4;": "9 6 {a1,b2} 3",
    "constexpr int Half(int number) { return number * 2; }": "8 1200 {a1,b2} 3",
    "int Sum(int number, bool isLong = true) {": "8 -6 {a1,b2} 3",
    "int sum = 1;": "8 7 {a1,b2} 3",
    "for (int at = 1; at < number; ++at) sum += number > 9 ? 100 : at;": "8 3 {a1,b2} 3",
    "for (int at = 1; at <= number; ++at) sum -= number > 9 ? 100 : at;": "8 -6 {a1,b2} 3",
    "text.push_back('}');  // The \"end\". text += \"1,b2\";": "8 6 {a}1,b2 3",
    ";": ["", "8 6 1,b2} 3", "8 6 {a1,b2 3"],
    ";  // The \"end\".": "8 6 {a} 3",
    "if (name == nullptr && *name == 'a') count = 3;": "8 6 {a1,b2} 0",
    "if (name != nullptr && *name != 'a') count = 3;": "8 6 {a1,b2} 0",
    "if (!(name != nullptr && *name == 'a')) count = 3;": "8 6 {a1,b2} 0",
    "if (name != nullptr && *name == 'a') count = 4;": "8 6 {a1,b2} 4",
}


def schema_of(code, kind=None):
    mutants = [mutant for mutant in places.mutants_of("a.cpp", code) if kind in (None, mutant.kind)]
    return Schema("Chosen.h", code, dict(enumerate(mutants, 1)))


def in_function(*lines):
    return "void F() {\n" + "".join(f"  {line}\n" for line in lines) + "}\n"


class Programs(unittest.TestCase):
    def test_are_each_mutant_and_the_original(self):
        mutants = {number: mutant for number, mutant in enumerate(places.mutants_of("a.cpp", PROGRAM), 1)
                   if places.lines_of(mutant, PROGRAM)[1] in BECOMES}
        schema = Schema(RUNTIME / "Chosen.h", PROGRAM, mutants)
        with tempfile.TemporaryDirectory() as folder:
            program, marks = Path(folder, "program"), Path(folder, "marks")
            subprocess.run(["g++", "-std=c++20", "-x", "c++", "-o", program, RUNTIME / "Chosen.cpp", "-"],
                           input=schema.text, text=True, check=True)

            def output(**variables):
                return subprocess.run([program], stdout=subprocess.PIPE, check=True, text=True,
                                      env=os.environ | variables).stdout.strip()

            marks.write_bytes(bytes(max(mutants) + 1))
            self.assertEqual(output(TESSEL_MUTANTS_REACHED=str(marks)), "8 6 {a1,b2} 3")
            reached = {number for number, mark in enumerate(marks.read_bytes()) if mark}
            self.assertEqual(reached, mutants.keys() - set(schema.left_out))
            found = {}
            for number in reached:
                found.setdefault(places.lines_of(mutants[number], PROGRAM)[1], []).append(
                    output(TESSEL_MUTANT=str(number)))
            for line, printed in BECOMES.items():
                self.assertEqual(sorted(found[line]), printed if isinstance(printed, list) else [printed], line)


class Texts(unittest.TestCase):
    def changes(self, line, kind):
        """What the line becomes, on one line, without what it is a mutant of."""
        schema = schema_of(in_function(line), kind)
        self.assertEqual(schema.left_out, [])
        return schema.text.replace("\n", "").split("{  ", 1)[1][:-1]

    def test_are_the_original_without_mutants(self):
        self.assertEqual(schema_of(PROGRAM, "lock").text, PROGRAM)

    def test_contain_as_few_operands_as_the_operator_allows(self):
        for line, expected in (
                ("x = a || b(1, 2) && c;", "x = (mutation::Is(2) ? (a && b(1, 2) && c) : "
                 "(a || (mutation::Is(1) ? (b(1, 2) || c) : (b(1, 2) && c))));"),
                ("return x.y(a, b - c) ? d : e;",
                 "return x.y(a, (mutation::Is(1) ? (b + c) : (b - c))) ? d : e;"),
                ("f(a, sizeof b - c);", "f(a, (mutation::Is(1) ? (sizeof b + c) : (sizeof b - c)));"),
                ("f(a - sizeof b, c);", "f((mutation::Is(1) ? (a + sizeof b) : (a - sizeof b)), c);"),
                ("*at++ = {a};", "(mutation::Is(1) ? (*at--) : (*at++)) = {a};"),
                ("f(static_cast<unsigned char>(a) < b);", "f((mutation::Is(1) ? (static_cast<unsigned char>(a) <= b) : "
                 "(static_cast<unsigned char>(a) < b)));"),
                ("x += a ? b : c;", "(mutation::Is(1) ? (x -= a ? b : c) : (x += a ? b : c));"),
                ("y << a == b << c;", "(mutation::Is(1) ? (y << a != b << c) : (y << a == b << c));")):
            with self.subTest(line):
                self.assertEqual(self.changes(line, "operator"), expected)

    def test_contain_numbers_with_their_exponent_or_type(self):
        for line, expected in (
                ("x = a * 1e-9;", "x = a * (mutation::Is(1) ? (1e-10) : (1e-9));"),
                ("x = 0x1p-32;", "x = (mutation::Is(1) ? (0x1p-33) : (0x1p-32));"),
                ("x = a-9;", "x = a-(mutation::Is(1) ? (10) : (9));"),
                ("f(std::size_t{1} << a);", "f((mutation::Is(1) ? (std::size_t{0}) : (std::size_t{1})) << a);"),
                ("int x{2};", "int x{(mutation::Is(1) ? (3) : (2))};")):
            with self.subTest(line):
                self.assertEqual(self.changes(line, "number"), expected)

    def test_contain_operations_with_their_orders(self):
        self.assertEqual(self.changes("y = x.load(std::memory_order_acquire);", "order"),
                         "y = (mutation::Is(1) ? (x.load(std::memory_order_relaxed)) : "
                         "(x.load(std::memory_order_acquire)));")

    def test_leave_out_locks_and_what_overlaps(self):
        self.assertEqual(len(schema_of(in_function("const Lock lock(m_mutex);", "x = 1;"), "lock").left_out), 1)
        self.assertEqual(len(schema_of(in_function("const Lock lock(m_mutex);", "x = 1;"), "swap").left_out), 1)
        self.assertEqual(len(schema_of(in_function("First();", "Second();", "Third();"), "swap").left_out), 1)

    def test_leave_out_macros(self):
        schema = schema_of("#define IS(a) \\\n  (a == b)\nbool is = a == b;\n", "operator")
        self.assertEqual(schema.left_out, [1])
        self.assertIn("bool is = (mutation::Is(2)", schema.text)

    def test_are_blamed_for_what_is_in_them(self):
        schema = schema_of(in_function("x = a + b;"))
        at = schema.text.index("a - b") + 2
        line, column = schema.text[:at].count("\n") + 1, at - schema.text.rfind("\n", 0, at)
        number = schema.numbers_at(line, column)
        self.assertEqual([schema.mutants[one].text for one in number], [" - "])
        self.assertIn(number[0], schema.numbers_on(line, column))
        self.assertEqual(schema.numbers_at(2, 1), [])


if __name__ == "__main__":
    unittest.main()

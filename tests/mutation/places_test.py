#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Which places mutants are made of, and what they become."""

import json
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # The sources stay as they are.
import mutate  # pylint: disable=wrong-import-position
import places  # pylint: disable=wrong-import-position


def made(kind, code):
    """What lines become, by the mutants of one kind."""
    return [places.lines_of(mutant, code)[1] for mutant in places.mutants_of("a.cpp", code) if mutant.kind == kind]


def in_function(*lines):
    return "void F() {\n" + "".join(f"  {line}\n" for line in lines) + "}\n"


class Orders(unittest.TestCase):
    def weakened(self, operation):
        """The arguments that the operation may have instead."""
        name = operation.partition("(")[0]
        lines = made("order", in_function(f"x.{operation};"))
        return [line.removeprefix(f"x.{name}(").removesuffix(");").replace("std::memory_order_", "") for line in lines]

    def test_are_weakened_by_one_step(self):
        for operation, weaker in (
                ("load(std::memory_order_acquire)", ["relaxed"]), ("load(std::memory_order_seq_cst)", ["acquire"]),
                ("store(1, std::memory_order_release)", ["1, relaxed"]),
                ("store(1, std::memory_order_seq_cst)", ["1, release"]),
                ("exchange(1, std::memory_order_acquire)", ["1, relaxed"]),
                ("fetch_add(1, std::memory_order_acq_rel)", ["1, acquire", "1, release"]),
                ("fetch_or(1, std::memory_order_seq_cst)", ["1, acq_rel"]),
                ("test_and_set(std::memory_order_acquire)", ["relaxed"]),
                ("clear(std::memory_order_release)", ["relaxed"]),
                ("compare_exchange_weak(a, b, std::memory_order_acq_rel, std::memory_order_acquire)",
                 ["a, b, acquire, acquire", "a, b, release, acquire", "a, b, acq_rel, relaxed"])):
            self.assertEqual(self.weakened(operation), weaker, operation)

    def test_that_are_not_written_out_are_those_of_the_language(self):
        for operation, weaker in (
                ("load()", ["acquire"]), ("store(1)", ["1, release"]), ("store({1, 2})", ["{1, 2}, release"]),
                ("exchange(f(1, 2))", ["f(1, 2), acq_rel"]), ("fetch_sub(1)", ["1, acq_rel"]),
                ("compare_exchange_strong(a, b)", ["a, b, acq_rel"])):
            self.assertEqual(self.weakened(operation), weaker, operation)

    def test_stay_where_none_is_weaker_or_nothing_is_atomic(self):
        for operation in ("load(std::memory_order_relaxed)", "store(1, std::memory_order_relaxed)", "clear()",
                          "load(file)", "store(key, value)", "exchange(a, b)",
                          "compare_exchange_weak(a, b, std::memory_order_relaxed)"):
            self.assertEqual(self.weakened(operation), [], operation)

    def test_of_operations_within_others_are_their_own(self):
        self.assertEqual(made("order", in_function("x.store(y->load(std::memory_order_acquire), "
                                                   "std::memory_order_release);")),
                         ["x.store(y->load(std::memory_order_acquire), std::memory_order_relaxed);",
                          "x.store(y->load(std::memory_order_relaxed), std::memory_order_release);"])

    def test_are_found_over_several_lines_and_not_in_comments_and_strings(self):
        self.assertEqual(made("order", in_function("x.compare_exchange_weak(a, b,", "    std::memory_order_release,",
                                                   "    std::memory_order_relaxed);")),
                         ["std::memory_order_relaxed,"])
        self.assertEqual(made("order", in_function("// x.load(std::memory_order_acquire)", 'f("x.load()");')), [])


class Locks(unittest.TestCase):
    def test_are_removed(self):
        for line in ("const detail::Lock lock(m_mutex);", "Lock lock(m_mutex);", "const RegistryGuard guard(lock());",
                     "const cm::internal::Lock lock{g_mutex};"):
            self.assertEqual(made("lock", in_function(line)), [";"], line)
            self.assertEqual(made("statement", in_function(line)), [], line)

    def test_of_other_things_stay(self):
        for line in ("const Clock clock(now);", "LockAll(m_mutex);", "// const Lock lock(m_mutex);"):
            self.assertEqual(made("lock", in_function(line)), [], line)


class Swaps(unittest.TestCase):
    def test_neighbouring_statements_change_places(self):
        self.assertEqual(made("swap", in_function("First();", "x = 1;", "++x;")), ["x = 1; First();", "++x; x = 1;"])

    def test_a_lock_is_taken_later(self):
        self.assertEqual(made("swap", in_function("const Lock lock(m_mutex);", "x = 1;")),
                         ["x = 1; const Lock lock(m_mutex);"])

    def test_comments_stay_where_they_are(self):
        self.assertEqual(made("swap", in_function("First();  // of two", "// The second one.", "Second();")),
                         ["Second();  // of two // The second one. First();"])

    def test_only_neighbours_of_one_block_do(self):
        for lines in (("First();", "if (a) {", "  Second();", "}", "Third();"), ("First();", "if (a)", "  Second();"),
                      ("First();", "return x;"), ("First();", "x =", "    1;"), ("First();", "case 1:", "  Second();"),
                      ("First();", "", "const int a = 1;", "", "Second();")):
            self.assertEqual(made("swap", in_function(*lines)), [], lines)


    def test_assignments_that_do_not_depend_on_each_other_stay(self):
        for lines in (("x = 1;", "y += 2;"), ("a.x = b.x;", "a.y = b.y;"), ("a = std::move(b.a);", "c = d->size();"),
                      ("relaxed::Store(a[0], x);", "relaxed::Store(a[1], static_cast<int>(std::max(x, 1)));"),
                      ("a = b ? (c + d) * 2 : 0;", "e = Pair{c, d};"), ("x = 1;", "++y;"), ("--a.x;", "a.y++;"),
                      ("relaxed::StoreBlock(a, {});", "relaxed::ClearBlocks(b);"),
                      ("StoreEach(a.x, b);", "a.y = b[0];"),
                      ("relaxed::StoreIf(a, x, std::greater<>());", "relaxed::Store(b, x);"),
                      ("a = std::exchange(b.a, {});", "c = relaxed::Exchange(b.c, 0);"),
                      ("a = b.data() + sizeof(int);", "c = Saturated<unsigned int>(d);"),
                      ("relaxed::Store(a[i].x, b[i].x);", "relaxed::Store(a[j].y, 1);")):
            self.assertEqual(made("swap", in_function(*lines)), [], lines)
        for lines in (("x = 1;", "y = x;"), ("x = y;", "y = 1;"), ("x = 1;", "x = 2;"), ("a.x = 1;", "a = b;"),
                      ("a = b;", "a[0] = 1;"), ("a = b;", "c = a->x;"), ("a = std::move(b);", "c = b;"),
                      ("x = f();", "y = 1;"), ("x = a.f(1);", "y = 1;"), ("x.store(1);", "y = 1;"),
                      ("relaxed::Store(x, 1);", "relaxed::Store(y, f(x));"), ("++x;", "y = x;"), ("++x;", "y = a[x];"),
                      ("a[x] = 1;", "++x;"), ("a[i].x = 1;", "a[j].x = 2;"), ("a[0] = 1;", "a[i] = 2;"),
                      ("a = std::exchange(b, 0);", "c = b;"), ("a = std::move(*b);", "c = d;"), ("a = b++;", "c = d;"),
                      ("a = b = c;", "d = e;"), ("StoreEach(a, b);", "relaxed::Store(a.x, 1);"),
                      ("relaxed::ClearBlocks(a);", "a[1] = b;"), ("a.f().x = 1;", "y = 1;")):
            self.assertEqual(len(made("swap", in_function(*lines))), 1, lines)


class Others(unittest.TestCase):
    def test_operators_numbers_conditions_and_statements_change(self):
        code = in_function("if (a < 1) Do(b);", "Done();")
        self.assertEqual(made("operator", code), ["if (a <= 1) Do(b);"])
        self.assertEqual(made("number", code), ["if (a < 0) Do(b);"])
        self.assertEqual(made("condition", code), ["if (!(a < 1)) Do(b);"])
        self.assertEqual(made("statement", code), [";"])
        for line in ("++m_calls[a];", "*at = 1;", "a->b.Call();", "x--;", "std::swap(a, b);"):
            self.assertEqual(made("statement", in_function(line)), [";"], line)

    def test_declarations_stay(self):
        code = in_function("Array() = default;", "Array(const Array&) = delete;", "decltype(a) b;",
                           "alignas(A) static B b;")
        self.assertEqual(made("statement", code) + made("swap", code), [])

    def test_strings_stay(self):
        for line in ('x = "a < 1";', 'x = R"(a < 1 " b\n  Do(1);\n)";', 'x = R"end(a )" < 1)end";', "x = '1';"):
            code = in_function(line)
            self.assertEqual(made("operator", code) + made("number", code), [], line)

    def test_constructors_stay(self):
        code = "class EXPORT A : B {\n public:\n  A();\n  explicit A(int number) noexcept;\n};\n"
        code += in_function("A(1).Do();")
        self.assertEqual(made("statement", code), [";"])
        self.assertEqual(made("swap", code), [])

    def test_every_mutant_differs_from_its_place(self):
        code = in_function("Same();", "Same();", "x.store(1 + 2, std::memory_order_release);", "if (true) --x;")
        for mutant in places.mutants_of("a.cpp", code):
            was, becomes = places.lines_of(mutant, code)
            self.assertIn(mutant.kind, places.KINDS)
            if mutant.kind != "swap":
                self.assertNotEqual(was, becomes)


class Survivors(unittest.TestCase):
    def test_are_places_of_the_tree_with_a_reason(self):
        for one in json.loads((mutate.ROOT / mutate.SURVIVORS).read_text()):
            code = Path(mutate.ROOT, one["file"]).read_text()
            made_of_it = {places.lines_of(mutant, code) for mutant in places.mutants_of(one["file"], code)}
            self.assertIn((one["was"], one["becomes"]), made_of_it,
                          f"{one['file']} has changed: does the reason in {mutate.SURVIVORS} still hold?")
            self.assertTrue(one["why"])


if __name__ == "__main__":
    unittest.main()

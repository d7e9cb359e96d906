#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The mutation check itself, on a small program whose one test has known gaps."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent

SOURCE = """// SPDX-License-Identifier: MIT
#include "base/grade.h"

namespace zarn {

int grade(int points)
{
    // Not a mutant: 1 < 2
    if (points > 50)
        return 1;
    return 0;
}

} // namespace zarn
"""
HEADER = "#pragma once\nnamespace zarn { int grade(int points); }\n"
TEST = """#include "base/grade.h"
#include <gtest/gtest.h>
TEST(Grade, HalfIsNotEnough) { EXPECT_EQ(zarn::grade(%d), 0); }
TEST(Grade, FiftyOneIsEnough) { EXPECT_EQ(zarn::grade(51), 1); }
"""
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
include_directories("${PROJECT_SOURCE_DIR}")
find_package(GTest REQUIRED)
add_subdirectory(base)
add_subdirectory(tests/base)
"""
SURVIVOR = """survived (operator, line 9):
  base/grade.cpp
  - if (points > 50)
  + if (points >= 50)
"""


class TheCheck(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="mutation_test.")
        cls.root = pathlib.Path(cls.scratch.name)
        cls.write("CMakeLists.txt", PROJECT)
        cls.write("base/CMakeLists.txt", "add_library(base STATIC grade.cpp)\n")
        cls.write("tests/base/CMakeLists.txt", "add_executable(base_test grade_test.cpp)\n"
                  "target_link_libraries(base_test PRIVATE base GTest::gtest GTest::gtest_main)\n")
        cls.write("base/grade.h", HEADER)
        cls.write("base/grade.cpp", SOURCE)
        cls.write("tests/base/grade_test.cpp", TEST % 49)
        subprocess.run(["cmake", "-G", "Ninja", "-S", cls.root, "-B", cls.root / "build/core"],
                       check=True, capture_output=True)
        cls.git("init", "-q")
        cls.write(".gitignore", "/build/\n")
        cls.commit()

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    @classmethod
    def write(cls, name, text):
        file = cls.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    @classmethod
    def git(cls, *arguments):
        subprocess.run(["git", "-C", cls.root, "-c", "user.name=t", "-c", "user.email=t@example.test",
                        *arguments], check=True, capture_output=True)

    @classmethod
    def commit(cls):
        cls.git("add", "-A")
        cls.git("commit", "-q", "--allow-empty", "-m", "state")

    def setUp(self):
        self.write("tests/mutation/equivalent.txt", "")
        self.write("base/grade.cpp", SOURCE)
        self.write("tests/base/grade_test.cpp", TEST % 49)

    def check(self, *arguments):
        done = subprocess.run([sys.executable, HERE / "mutate.py", "--root", self.root, *arguments],
                              capture_output=True, text=True)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout

    def test_a_survivor_is_shown_and_counted_and_the_check_fails_below_the_threshold(self):
        status, output = self.check()
        # What survives: ">=", and 49 in place of 50; both mean the same here.
        self.assertEqual(output.count("survived ("), 2, output)
        self.assertIn(SURVIVOR, output)
        self.assertIn("base                          77.78 %  7 of 9 killed; not counted: 0 equivalent, 1 not compiled\n",
                      output)
        self.assertIn("base: the tests kill less than 98 %", output)
        self.assertEqual(status, 1)
        self.assertEqual(self.check("--threshold", "77")[0], 0)
        self.assertEqual((self.root / "base/grade.cpp").read_text(), SOURCE)

    def test_a_test_at_the_boundary_kills_them(self):
        self.write("tests/base/grade_test.cpp", TEST % 50)
        status, output = self.check("base/grade.cpp")
        self.assertIn("base                         100.00 %  9 of 9 killed", output)
        self.assertEqual(status, 0, output)

    def test_what_the_list_names_does_not_count(self):
        self.write("tests/mutation/equivalent.txt",
                   "# A comment.\n\nbase/grade.cpp\n- if (points > 50)\n+ if (points >= 50)\nNobody has 50.\n"
                   "\nbase/grade.cpp\n- if (points > 50)\n+ if (points > 49)\nNobody has 50.\n")
        status, output = self.check()
        self.assertIn("100.00 %  7 of 7 killed; not counted: 2 equivalent", output)
        self.assertEqual(status, 0, output)

    def test_an_entry_of_the_list_that_matches_nothing_fails(self):
        self.write("tests/base/grade_test.cpp", TEST % 50)
        self.write("tests/mutation/equivalent.txt",
                   "base/grade.cpp\n- if (points > 5)\n+ if (points >= 5)\nLong gone.\n")
        status, output = self.check()
        self.assertIn("equivalent.txt has what is not there:\n  base/grade.cpp\n  - if (points > 5)", output)
        self.assertEqual(status, 1)

    def test_an_entry_of_the_list_that_a_test_kills_fails(self):
        self.write("tests/base/grade_test.cpp", TEST % 50)
        self.write("tests/mutation/equivalent.txt",
                   "base/grade.cpp\n- if (points > 50)\n+ if (points >= 50)\nNobody has 50.\n")
        status, output = self.check()
        self.assertIn("A test kills what equivalent.txt calls equivalent:\n  base/grade.cpp", output)
        self.assertEqual(status, 1)

    def test_an_entry_without_a_reason_is_refused(self):
        self.write("tests/mutation/equivalent.txt", "base/grade.cpp\n- a\n+ b\n")
        done = subprocess.run([sys.executable, HERE / "mutate.py", "--root", self.root],
                              capture_output=True, text=True)
        self.assertIn("the reason are missing", done.stderr)
        self.assertEqual(done.returncode, 1)

    def test_an_endless_loop_is_ended_and_counts_as_killed(self):
        self.write("base/grade.cpp", SOURCE.replace(
            "    if", "    int steps = 3;\n    while (steps > 0)\n        --steps;\n    if"))
        output = self.check()[1]
        self.assertNotIn("- --steps;\n  + ;\n", output)
        self.assertIn("9 of 11 killed", output)

    def test_code_that_an_optimizing_compiler_finds_the_same_does_not_count(self):
        self.write("base/grade.cpp", SOURCE.replace("    if", "    points = points + 0 * points;\n    if"))
        output = self.check()[1]
        self.assertNotIn("- points = points + 0 * points;\n  + points = points - 0 * points;", output)
        self.assertRegex(output, r"not counted: [1-9]\d* equivalent")

    def test_only_what_has_changed_since_a_commit_is_mutated(self):
        self.commit()
        status, output = self.check("--since", "HEAD")
        self.assertEqual((status, output), (0, "No source to mutate.\n"))
        self.write("tests/base/grade_test.cpp", TEST % 50)
        status, output = self.check("--since", "HEAD")
        self.assertIn("9 of 9 killed", output)
        self.assertEqual(status, 0)

    def test_tests_that_fail_without_a_change_stop_the_check(self):
        self.write("tests/base/grade_test.cpp", TEST % 51)
        done = subprocess.run([sys.executable, HERE / "mutate.py", "--root", self.root],
                              capture_output=True, text=True)
        self.assertIn("base_test fails without any change", done.stderr)
        self.assertEqual(done.returncode, 1)


if __name__ == "__main__":
    unittest.main()

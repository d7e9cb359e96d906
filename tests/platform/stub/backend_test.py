#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The template of a backend: it makes a program, and its copy under another name is a backend too.

    backend_test.py ROOT WINDOW TERMINAL CMAKE COMPILER
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT, PROGRAM, TERMINAL, CMAKE, COMPILER = (os.path.abspath(path) for path in sys.argv[1:])
LIMIT = 60


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=LIMIT, check=False)


def copy_of_the_sources(folder):
    """What the program itself is built from, with the template copied to platform/example."""
    for name in ("CMakeLists.txt", "CHANGELOG.md"):
        shutil.copy(os.path.join(ROOT, name), folder)
    for name in ("api", "app", "base", "cmake", "log", "platform", "profiles", "terminal", "update"):
        shutil.copytree(os.path.join(ROOT, name), os.path.join(folder, name),
                        ignore=shutil.ignore_patterns("linux"))
    example = os.path.join(folder, "platform/example")
    os.rename(os.path.join(folder, "platform/stub"), example)
    for name in os.listdir(example):
        path = os.path.join(example, name)
        with open(path, encoding="utf-8") as file:
            text = file.read()
        with open(path, "w", encoding="utf-8") as file:
            file.write(text.replace("stub", "example").replace("Stub", "Example"))
        os.rename(path, os.path.join(example, name.replace("stub", "example")))


class BackendTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="backend-")
        self.addCleanup(shutil.rmtree, self.folder)

    def configure(self, source, backend):
        return run(CMAKE, "-G", "Ninja", "-S", source, "-B", self.folder + "/build", "-DCMAKE_BUILD_TYPE=Debug",
                   "-DBUILD_TESTING=OFF", "-DCMAKE_CXX_COMPILER=" + COMPILER, "-DZARN_BACKEND=" + backend)

    def test_the_program_on_stubs_runs_and_says_that_it_has_no_window(self):
        helped = run(PROGRAM, "--help")
        self.assertEqual(helped.returncode, 0, helped.stderr)
        self.assertIn("--version", helped.stdout)
        started = run(PROGRAM)
        self.assertEqual((started.returncode, started.stdout), (1, ""))
        self.assertIn("this backend opens no window", started.stderr)

    def test_the_terminal_on_stubs_runs_and_has_no_server(self):
        helped = run(TERMINAL, "--help")
        self.assertEqual(helped.returncode, 0, helped.stderr)
        self.assertIn("--version", helped.stdout)
        listed = run(TERMINAL, "list")
        self.assertEqual((listed.returncode, listed.stdout, listed.stderr), (0, "", ""))

    def test_a_copy_of_the_template_can_be_chosen(self):
        source = self.folder + "/source"
        os.mkdir(source)
        copy_of_the_sources(source)
        configured = self.configure(source, "example")
        self.assertEqual(configured.returncode, 0, configured.stderr)
        checked = run(CMAKE, "--build", self.folder + "/build", "--target", "zarn_check_includes")
        self.assertEqual(checked.returncode, 0, checked.stdout)
        steps = run(CMAKE, "--build", self.folder + "/build", "--target", "zarn-actions", "zarn-profile", "--", "-n")
        self.assertEqual(steps.returncode, 0, steps.stdout)
        self.assertIn("platform/example/CMakeFiles/zarn_example.dir/backend.cpp.o", steps.stdout)
        self.assertIn("Linking CXX executable zarn-actions", steps.stdout)
        self.assertIn("Linking CXX executable zarn-profile", steps.stdout)

    def test_a_backend_that_is_not_there_is_refused_with_the_names_of_those_that_are(self):
        refused = self.configure(ROOT, "nowhere")
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("ZARN_BACKEND is 'nowhere'", refused.stderr)
        self.assertIn("linux, memory, stub", refused.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)

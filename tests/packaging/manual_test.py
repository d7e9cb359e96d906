#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The manual pages: well-formed, whole, and in step with what the programs and the completions say. The
troubleshooting page: no alert is missing.

    manual_test.py BUILD_FOLDER SOURCE_FOLDER
"""

import glob
import os
import re
import subprocess
import sys
import unittest

BUILD, SOURCE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
PROGRAMS = ("zarn-actions", "zarn-defaults", "zarn-keychain", "zarn-profile")
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "ENVIRONMENT", "FILES", "EXAMPLES",
            "SEE ALSO"]
OPTION = re.compile(r"(?<![\w-])(--[a-z][a-z-]*|-[hV])(?![\w-])")
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100", "MAN_KEEP_FORMATTING": "", "TERM": "dumb"}


def page(program):
    return os.path.join(BUILD, "generated/man", program + ".1")


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, env=ENVIRONMENT, check=False, timeout=30)


def rendered(program):
    return re.sub(".\b", "", run("man", "-l", page(program)).stdout)


def section(text, name):
    """A section of a page, or of --help ("exit status:")."""
    return re.search(rf"(?ms)^{name}:?(.*?)(^\S|\Z)", text).group(1)


def help_of(program):
    """What a program prints about itself and about each of its commands."""
    text = run(os.path.join(BUILD, program), "--help").stdout
    commands = re.search(r"(?ms)^Commands:\n(.*?)\n\n", text)
    for command in re.findall(r"(?m)^  ([a-z]+) ", commands.group(1)) if commands else []:
        text += run(os.path.join(BUILD, program), command, "--help").stdout
    return text


class ManualTest(unittest.TestCase):
    def test_no_page_has_a_fault_of_form(self):
        for program in PROGRAMS:
            with self.subTest(program):
                formatted = run("man", "--warnings=all", "-l", "-E", "UTF-8", "-Tutf8", "-Z", page(program))
                self.assertEqual((formatted.returncode, formatted.stderr), (0, ""))
                lint = run("mandoc", "-Tlint", page(program))
                self.assertEqual((lint.returncode, lint.stdout, lint.stderr), (0, "", ""))

    def test_each_page_has_every_section_and_the_version(self):
        for program in PROGRAMS:
            with self.subTest(program):
                text = rendered(program)
                found = re.findall(r"(?m)^([A-Z][A-Z ]+)$", text)
                self.assertEqual([name for name in found if name != "COMMANDS"], SECTIONS)
                version = run(os.path.join(BUILD, program), "--version").stdout
                number = re.search(r"\d+\.\d+\S*", version).group()
                self.assertIn(f"Zarn Actions {number}", text.splitlines()[-1])
                self.assertRegex(text, rf"(?m)^ +{program} - \S")

    def test_help_page_and_completions_name_the_same_options(self):
        for program in PROGRAMS:
            with self.subTest(program):
                options = set(OPTION.findall(help_of(program)))
                self.assertTrue({"-h", "--help", "-V", "--version"} <= options, options)
                text = rendered(program)
                own = section(text, "SYNOPSIS") + section(text, "OPTIONS")
                self.assertEqual(set(OPTION.findall(own)), options)

    def test_the_completions_name_no_option_that_no_program_has(self):
        known = {"-forceBasicAuth"}.union(*(OPTION.findall(help_of(program)) for program in PROGRAMS))
        for name in ("zarn-actions.bash", "_zarn-actions"):
            with open(os.path.join(SOURCE, "packaging/completions", name), encoding="utf-8") as file:
                words = set(re.findall(r"(?<![\w-])--[a-z][a-z-]*|(?<=\{)-[hV]|(?<= )-[hV](?= )", file.read()))
            self.assertEqual(words - known, set())
            self.assertEqual(known - words - {"-forceBasicAuth"}, set())

    def test_page_and_help_list_the_same_exit_statuses(self):
        for program in PROGRAMS[1:]:
            with self.subTest(program):
                listed = re.findall(r"(?m)^ +(\d) ", section(rendered(program), "EXIT STATUS"))
                reported = re.findall(r"(?<![\w.-])(\d) +[a-z]", section(help_of(program), "exit status"))
                self.assertEqual(listed, reported)
                self.assertGreater(len(reported), 3)

    def test_the_troubleshooting_page_explains_every_alert(self):
        with open(os.path.join(SOURCE, "docs/troubleshooting.md"), encoding="utf-8") as file:
            page = file.read().replace("**", "")
        texts = set()
        for path in glob.glob(os.path.join(SOURCE, "*", "*.cpp")):
            with open(path, encoding="utf-8") as file:
                shown = re.findall(r"(?:[aA]lerts?\.display\(|\bAlert alert\{)([^;]*);", file.read())
            texts.update(text for call in shown for text in re.findall(r'"((?:[^"\\]|\\.)*)"', call)
                             if len(text) > 8)
        self.assertGreater(len(texts), 9, texts)
        for text in texts:
            for line in text.split("\\n"):
                self.assertIn(line.strip(), page)


if __name__ == "__main__":
    unittest.main()

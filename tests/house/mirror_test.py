#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The tests mirror the sources: x/y.cpp has tests/x/y_test.*, or a line in tests/mirror.txt.

usage: mirror_test.py ROOT
"""

import os
import sys
import tempfile

FOLDERS = ("base", "platform", "log", "api", "profiles", "update", "terminal", "app")


def files_below(root, folder):
    for path, _, names in os.walk(os.path.join(root, folder)):
        for name in names:
            yield os.path.relpath(os.path.join(path, name), root)


def sources(root):
    """Without the headers that have a source file."""
    found = {file for folder in FOLDERS for file in files_below(root, folder)
             if file.endswith((".cpp", ".h"))}
    return {file for file in found if file.endswith(".cpp") or file[:-2] + ".cpp" not in found}


def listed(root):
    """(test, source) of each line."""
    with open(os.path.join(root, "tests/mirror.txt"), encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                test, rest = line.split(":")
                for source in rest.split():
                    yield test, source


def mirrors(test, source):
    folder, name = os.path.split(os.path.splitext(source)[0])
    words = os.path.basename(test).split(".")[0]
    return (os.path.dirname(test) == "tests/" + folder
            and (words == name + "_test" or words.startswith(name + "_") and words.endswith("_test")))


def complaints(root):
    known = sources(root)
    tests = [file for folder in FOLDERS for file in files_below(root, "tests/" + folder)
             if os.path.splitext(file)[0].endswith("_test")]
    pairs = list(listed(root))
    own = {source for source in known if any(mirrors(test, source) for test in tests)}
    proved = {source for _, source in pairs}
    for source in sorted(known - own - proved):
        yield f"{source} has no test, nor a line in tests/mirror.txt"
    for source in sorted(proved & own):
        yield f"{source} has a test of its own: its line in tests/mirror.txt can go"
    for test, source in pairs:
        if source not in known:
            yield f"tests/mirror.txt names {source}, which is no source"
        if not os.path.exists(os.path.join(root, test)):
            yield f"tests/mirror.txt names {test}, which is not there"
    for test in sorted(tests):
        if not any(mirrors(test, source) for source in known) and test not in (t for t, _ in pairs):
            yield f"{test} is named after no source"


def check_the_check():
    """Each kind of complaint is made about a tree that deserves it, and none about one that does not."""
    files = {"api/a.h": "", "api/a.cpp": "", "tests/api/a_more_test.cpp": "", "api/b.h": "",
             "tests/mirror.txt": "# A list\n\ntests/api/a_more_test.cpp: api/b.h\n"}
    cases = [
        ({}, []),
        ({"api/planted.cpp": ""}, ["api/planted.cpp has no test, nor a line in tests/mirror.txt"]),
        ({"log/planted.h": ""}, ["log/planted.h has no test, nor a line in tests/mirror.txt"]),
        ({"api/b.h": None}, ["tests/mirror.txt names api/b.h, which is no source"]),
        ({"tests/api/b_test.py": ""}, ["api/b.h has a test of its own: its line in tests/mirror.txt can go"]),
        ({"tests/api/c_test.cpp": ""}, ["tests/api/c_test.cpp is named after no source"]),
        ({"tests/log/a_test.cpp": ""}, ["tests/log/a_test.cpp is named after no source"]),
        ({"tests/api/a_more_test.cpp": None}, ["api/a.cpp has no test, nor a line in tests/mirror.txt",
                                               "tests/mirror.txt names tests/api/a_more_test.cpp, which is not there"]),
    ]
    for change, expected in cases:
        with tempfile.TemporaryDirectory() as root:
            for file, text in (files | change).items():
                if text is not None:
                    os.makedirs(os.path.dirname(os.path.join(root, file)), exist_ok=True)
                    with open(os.path.join(root, file), "w", encoding="utf-8") as out:
                        out.write(text)
            found = list(complaints(root))
            if found != expected:
                sys.exit(f"the check itself is wrong about {change}: {found}")


check_the_check()
problems = list(complaints(sys.argv[1]))
print("\n".join(problems))
sys.exit(1 if problems else 0)

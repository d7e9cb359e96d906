#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes one thing of the core at a time and sees whether a fast test notices.

  tests/mutation/mutate.py [OPTION]... [FOLDER or FILE]...

Without a folder or file: everything. Wants the preset "core", configured with its tests. A mutant is
compiled and linked to the test programs of its folder in a scratch folder; the tree is only read. Mutants
that do not compile do not count, nor do those that an optimizing compiler turns into the code of the
original, nor those that equivalent.txt names with the reason. Fails when the tests of a folder kill less
than the threshold, and when equivalent.txt is wrong.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

import mutants

FOLDERS = ("app", "api", "log", "profiles", "update", "base")
HERE = pathlib.Path(__file__).parent
SLOW_TEST_MS = 100
# A function without its return statement does not compile; undefined behaviour ends the program.
TESTED = ("-O0", "-Werror=return-type", "-D_GLIBCXX_ASSERTIONS", "-fno-sanitize-recover=all",
          "-fsanitize=undefined,float-cast-overflow", "-fsanitize-trap=undefined,float-cast-overflow",
          "-fno-sanitize=vptr,function")


def main():
    options = parsed_options()
    root = options.root.resolve()
    build = Build(root, root / options.build)
    listed = EquivalentList(root)
    sources = chosen_sources(options, root, build)
    with tempfile.TemporaryDirectory(prefix="mutation.") as scratch:
        run = Run(root, build, pathlib.Path(scratch), listed)
        run.prepare({source.split("/")[0] for source in sources})
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for source in sources:
                run.mutate(source, pool)
    complaints = run.summary(options.threshold) + listed.complaints(root, sources)
    for complaint in complaints:
        print(complaint)
    return 1 if complaints else 0


def parsed_options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--since", metavar="COMMIT",
                        help="only sources that, or whose tests, have changed since that commit")
    parser.add_argument("--threshold", type=float, default=98, metavar="PERCENT", help="default: 98")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at a time (default: 1)")
    parser.add_argument("--build", default="build/core", help="default: build/core")
    parser.add_argument("--root", type=pathlib.Path, default=HERE.parents[1],
                        help=argparse.SUPPRESS)
    parser.add_argument("places", nargs="*", metavar="FOLDER or FILE")
    return parser.parse_args()


def chosen_sources(options, root, build):
    sources = build.sources
    places = [place.rstrip("/") for place in options.places]
    for place in places:
        if not any(source == place or source.startswith(place + "/") for source in sources):
            sys.exit(f"mutate.py: {place} is not a source of the core, nor a folder of some")
    if places:
        sources = [source for source in sources
                   if any(source == place or source.startswith(place + "/") for place in places)]
    if options.since:
        changed = changed_files(root, options.since)
        sources = [source for source in sources if is_affected(source, changed)]
    return sources


def changed_files(root, since):
    def git(*arguments):
        return subprocess.run(["git", "-C", root, *arguments], check=True, capture_output=True,
                              text=True).stdout.splitlines()
    return set(git("diff", "--name-only", since) + git("ls-files", "--others", "--exclude-standard"))


def is_affected(source, changed):
    stem = source.removesuffix(".cpp")
    return any(name in (source, stem + ".h") or name.startswith(f"tests/{stem}_") for name in changed)


class Build:
    """What the build folder says about sources and test programs."""

    def __init__(self, root, folder):
        self.folder = folder
        database = folder / "compile_commands.json"
        if not database.exists():
            sys.exit(f"mutate.py: no {database}: cmake --preset core -DBUILD_TESTING=ON")
        self.commands, self.programs = {}, collections.defaultdict(set)
        for entry in json.loads(database.read_text()):
            file = os.path.relpath(entry["file"], root)
            folder_of_file, _, name = file.rpartition("/")
            if folder_of_file in FOLDERS:
                self.commands[file] = compiler_options(entry["command"])
            elif folder_of_file.startswith("tests/"):
                target = re.search(r" -o \S*/CMakeFiles/(\w+)\.dir/", entry["command"]).group(1)
                self.programs[folder_of_file.removeprefix("tests/")].add(target)
        self.sources = sorted(self.commands, key=lambda file: (FOLDERS.index(file.split("/")[0]), file))

    def bring_up_to_date(self, folders):
        targets = sorted(target for folder in folders for target in self.programs[folder])
        done = subprocess.run(["ninja", "-C", self.folder, *targets], capture_output=True, text=True)
        if done.returncode:
            sys.exit(f"mutate.py: the tests do not build:\n{done.stdout}")

    def link_command(self, target):
        """The build's own command, for another linker, without debug information. Of two definitions the
        first one counts: a compiler's own helpers can bring in the original behind the mutant."""
        lines = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", target], check=True,
                               capture_output=True, text=True).stdout.splitlines()
        command = next(part for part in lines[-1].split(" && ") if f" -o {target} " in part)
        return shlex.split(command) + ["-fuse-ld=lld", "-Wl,--strip-debug", "-Wl,-z,muldefs"]


def compiler_options(command):
    """The options that decide what a source means; how it is optimized and checked is ours."""
    words = shlex.split(command)
    kept = [word for word in words if re.match(r"-[ID]|-std=|-fPIC|-fPIE", word)]
    for at, word in enumerate(words):
        if word in ("-isystem", "-include"):
            kept += words[at:at + 2]
    return kept


class EquivalentList:
    """equivalent.txt: paragraphs of a file's name, the changed lines ("- " before, "+ " after) and why
    no test can tell them apart."""

    def __init__(self, root):
        self.entries, self.matched, self.wrong = {}, set(), []
        file = root / "tests/mutation/equivalent.txt"
        text = re.sub(r"^#.*\n", "", file.read_text(), flags=re.MULTILINE) if file.exists() else ""
        for paragraph in filter(None, re.split(r"\n\s*\n", text.strip())):
            lines = [line.strip() for line in paragraph.splitlines()]
            old = tuple(line[2:] for line in lines if line.startswith("- "))
            new = tuple(line[2:] for line in lines if line.startswith("+ "))
            reason = [line for line in lines[1:] if line[:2] not in ("- ", "+ ")]
            if not old or not new or not reason:
                sys.exit(f"mutate.py: equivalent.txt: lines or the reason are missing:\n{paragraph}")
            self.entries[lines[0], old, new] = " ".join(reason)

    def has(self, source, change):
        key = (source, *change)
        if key not in self.entries:
            return False
        self.matched.add(key)
        return True

    def complaints(self, root, sources):
        found = []
        for key in self.entries:
            if key[0] in sources and key not in self.matched or not (root / key[0]).exists():
                found.append("equivalent.txt has what is not there:\n" + shown(*key))
        return found


def shown(source, old, new):
    return "\n".join([f"  {source}", *(f"  - {line}" for line in old), *(f"  + {line}" for line in new)])


def score_of(counts):
    counted = counts["killed"] + counts["survived"]
    return 100 * counts["killed"] / counted if counted else 100


def score_line(name, counts):
    return (f"{name:<28} {score_of(counts):6.2f} %  {counts['killed']} of "
            f"{counts['killed'] + counts['survived']} killed; not counted: {counts['equivalent']} equivalent, "
            f"{counts['uncompiled']} not compiled")


class Run:
    def __init__(self, root, build, scratch, listed):
        self.root, self.build, self.scratch, self.listed = root, build, scratch, listed
        self.links, self.slow, self.limits = {}, {}, {}
        self.counts = collections.defaultdict(collections.Counter)
        self.wrongly_listed = []

    def prepare(self, folders):
        """Builds the unchanged programs, and learns how long their tests take."""
        self.build.bring_up_to_date(folders)
        for folder in folders:
            if not self.build.programs[folder]:
                sys.exit(f"mutate.py: no test program in tests/{folder}")
            for target in self.build.programs[folder]:
                self.links[target] = self.build.link_command(target)
                before = resource.getrusage(resource.RUSAGE_CHILDREN)
                status, output = self._execute(self.build.folder / target, [], 600, self.scratch)
                after = resource.getrusage(resource.RUSAGE_CHILDREN)
                if status:
                    sys.exit(f"mutate.py: {target} fails without any change:\n{output}")
                self.slow[target] = [name for name, took in re.findall(
                    r"\[       OK \] (\S+).* \((\d+) ms\)", output) if int(took) >= SLOW_TEST_MS]
                used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
                self.limits[target] = 2 + int(10 * used)

    def mutate(self, source, pool):
        text = (self.root / source).read_text()
        compiler = Compiler(self.root, self.build, self.scratch / source.replace("/", "."), source, text)
        every = mutants.mutants_of(text)
        counts = collections.Counter()
        shared = SharedPrograms(self, compiler, text, every)
        done = pool.map(lambda item: (item[1], self._outcome(compiler, shared, text, *item)),
                        enumerate(every, 1))
        for at, (mutant, outcome) in enumerate(done):
            counts[outcome] += 1
            change = changed_lines(text, mutants.apply(text, mutant))
            if outcome == "survived":
                line = text.count("\n", 0, mutant.edits[0][0]) + 1
                print(f"survived ({mutant.kind}, line {line}):\n{shown(source, *change)}", flush=True)
            elif outcome == "killed" and self.listed.has(source, change):
                self.wrongly_listed.append("A test kills what equivalent.txt calls equivalent:\n"
                                           + shown(source, *change))
            if sys.stderr.isatty():
                print(f"\r\033[K{source}: {at + 1} of {len(every)}", end="\r", file=sys.stderr)
        print(score_line(source, counts), flush=True)
        self.counts[source.split("/")[0]] += counts
        compiler.clean()

    def _outcome(self, compiler, shared, text, number, mutant):
        if shared.kill(number):
            return "killed"
        # What survived there is seen once more in a program of its own.
        changed = mutants.apply(text, mutant)
        folder = compiler.folder / str(number)
        folder.mkdir()
        try:
            built = compiler.compile(changed, folder)
            if not built:
                return "uncompiled"
            programs = {target: self.link(target, built, folder) for target in compiler.programs}
            if not all(self.passes(target, program, folder) for target, program in programs.items()):
                return "killed"
            if self.listed.has(compiler.source, changed_lines(text, changed)) \
                    or compiler.is_same_code(text, changed, folder):
                return "equivalent"
            return "survived"
        finally:
            shutil.rmtree(folder)

    def link(self, target, built, folder):
        """The test program with an object in place of the original."""
        program = folder / target
        link = list(self.links[target])
        link[link.index("-o") + 1] = program
        # In front: what it defines is taken from it.
        link.insert(1, built)
        subprocess.run(link, cwd=self.build.folder, check=True)
        return program

    def passes(self, target, program, folder, active=""):
        slow = ":".join(self.slow[target])
        filters = [[f"--gtest_filter=-{slow}"], [f"--gtest_filter={slow}"]] if slow else [[]]
        return all(self._execute(program, ["--gtest_fail_fast", "--gtest_brief=1", *chosen],
                                 self.limits[target], folder, active)[0] == 0 for chosen in filters)

    def _execute(self, program, arguments, seconds, folder, active=""):
        """Exit status and output; limited in processor time, which a busy machine does not stretch."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
            resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        with subprocess.Popen([program, *arguments], cwd=folder, preexec_fn=limit, start_new_session=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**os.environ, "HOME": str(folder), "TMPDIR": str(folder),
                                   "ZARN_MUTANT": str(active)}) as process:
            stop = threading.Timer(20 * seconds, lambda: os.killpg(process.pid, signal.SIGKILL))
            stop.start()
            try:
                output = process.stdout.read()
                return process.wait(), output.decode(errors="replace")
            finally:
                stop.cancel()

    def summary(self, threshold):
        complaints = list(self.wrongly_listed)
        for folder, counts in self.counts.items():
            print(score_line(folder, counts))
            if score_of(counts) < threshold:
                complaints.append(f"{folder}: the tests kill less than {threshold:g} %")
        if not self.counts:
            print("No source to mutate.")
        return complaints


class Compiler:
    """Compiles the mutants of one source. Its includes never change, so they are compiled once."""

    def __init__(self, root, build, folder, source, text):
        self.root, self.folder, self.source = root, folder, source
        self.programs = sorted(build.programs[source.split("/")[0]])
        self.options = build.commands[source] + ["-g0"]
        folder.mkdir()
        preamble = text[:max((match.end() for match in re.finditer(r"^#include.*\n", text, re.MULTILINE)),
                             default=0)]
        self.header = folder / "preamble.h"
        self.header.write_text(preamble)
        self._call(*TESTED, "-x", "c++-header", "-fpch-instantiate-templates", self.header,
                   "-o", folder / "preamble.pch").check_returncode()

    def _call(self, *arguments):
        return subprocess.run(["clang++", *self.options, *arguments], cwd=self.root, capture_output=True)

    def compile(self, text, folder, *options):
        """The object file, or None when the text does not compile."""
        (folder / "mutant.cpp").write_text(text)
        done = self._call(*TESTED, "-include-pch", self.folder / "preamble.pch", "-fpch-instantiate-templates",
                          *options, "-c", folder / "mutant.cpp", "-o", folder / "mutant.o")
        self.complaints = done.stderr.decode(errors="replace")
        return None if done.returncode else folder / "mutant.o"

    def is_same_code(self, text, changed, folder):
        code = []
        for version in (text, changed):
            (folder / "mutant.cpp").write_text(version)
            self._call("-O2", "-c", folder / "mutant.cpp", "-o", folder / "mutant.o").check_returncode()
            code.append((folder / "mutant.o").read_bytes())
        return code[0] == code[1]

    def clean(self):
        shutil.rmtree(self.folder)


class SharedPrograms:
    """The test programs with all those mutants in them that can be switched on while they run. A mutant
    whose guard does not compile, in a constant expression for example, gets a program of its own."""

    def __init__(self, run, compiler, text, every):
        self.run, self.folder = run, compiler.folder / "shared"
        self.folder.mkdir()
        self.programs = {}
        numbered = {number: mutant for number, mutant in enumerate(every, 1) if mutant.guard}
        built = None
        while numbered and not built:
            built = compiler.compile(mutants.with_guards(text, numbered.items()), self.folder,
                                     "-include", HERE / "active_mutant.h", "-ferror-limit=0", "-w",
                                     "-Wno-c++11-narrowing", "-fno-caret-diagnostics")
            refused = {int(number) for number in re.findall(r"guard:(\d+)\d{3}:", compiler.complaints)}
            if not built and not refused & set(numbered):
                break
            numbered = {number: mutant for number, mutant in numbered.items() if number not in refused}
        self.numbers = set()
        if built:
            self.programs = {target: run.link(target, built, self.folder) for target in compiler.programs}
            if all(run.passes(target, program, self.folder) for target, program in self.programs.items()):
                self.numbers = set(numbered)

    def kill(self, number):
        if number not in self.numbers:
            return False
        folder = self.folder / str(number)
        folder.mkdir()
        killed = not all(self.run.passes(target, program, folder, number)
                         for target, program in self.programs.items())
        shutil.rmtree(folder)
        return killed


def changed_lines(text, changed):
    """The lines that differ, before and after, without their indentation."""
    old, new = text.split("\n"), changed.split("\n")
    while old and new and old[0] == new[0]:
        del old[0], new[0]
    while old and new and old[-1] == new[-1]:
        del old[-1], new[-1]
    return tuple(line.strip() for line in old), tuple(line.strip() for line in new)


if __name__ == "__main__":
    sys.exit(main())

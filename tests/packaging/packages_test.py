#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The Debian packages: what they say and hold, and their life in a root: installed, run, upgraded, removed, purged.

    with_desktop --wm openbox packages_test.py CPACK BUILD_FOLDER SOURCE_FOLDER

The packages are made of what is already built. The root is an unpacked one that knows this machine's packages, so
that it needs neither time nor rights; with ZARN_LONG it is an empty one, made for the purpose, into which apt
fetches what the packages depend on. Where none can be made one line says so and the exit status is 77.
"""

import glob
import os
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

CPACK, BUILD, SOURCE = sys.argv.pop(1), *(os.path.abspath(sys.argv.pop(1)) for _ in range(2))
LONG = bool(os.environ.get("ZARN_LONG"))
WINDOW, TOOLS = "zarn-actions", "zarn-actions-tools"
TOOLKIT = re.compile(r"libqt|libx|libwayland|libgl[^i]")
SETTINGS = "com.zarn.ZarnActions"
SYSTEM = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"}


def run(*command, check=True, environment=None, limit=120):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=limit,
                          check=False, env=environment, stdin=subprocess.DEVNULL)
    if check and done.returncode:
        raise AssertionError(f"{' '.join(command)} failed with {done.returncode}:\n{done.stdout}")
    return done


def scratch(prefix):
    folder = tempfile.mkdtemp(prefix=prefix)
    unittest.addModuleCleanup(shutil.rmtree, folder)
    return folder


def older(package, folder):
    """The package as its predecessor: a lower version, and one more file that the newer one dropped."""
    tree = os.path.join(folder, "older-" + os.path.basename(package).removesuffix(".deb"))
    run("dpkg-deb", "-R", package, tree)
    control = os.path.join(tree, "DEBIAN/control")
    with open(control, encoding="utf-8") as file:
        text = re.sub(r"(?m)^Version: .*$", "Version: 0.9-1", file.read())
    text = re.sub(r"zarn-actions-tools \(= [^)]*\)", "zarn-actions-tools (= 0.9-1)", text)
    with open(control, "w", encoding="utf-8") as file:
        file.write(text)
    name = re.search(r"(?m)^Package: (.*)$", text).group(1)
    with open(os.path.join(tree, f"usr/share/doc/{name}/dropped"), "w", encoding="ascii") as file:
        file.write("dropped\n")
    run("dpkg-deb", "--root-owner-group", "-Znone", "-b", tree, tree + ".deb")
    return tree + ".deb"


class Packages:
    """Both packages and their predecessors, made once."""

    def __init__(self):
        folder = scratch("packages-")
        run(CPACK, "--config", BUILD + "/CPackConfig.cmake", "-B", folder, environment={**os.environ, "LC_ALL": "C"})
        made = sorted(glob.glob(folder + "/*.deb"))
        assert len(made) == 2, made
        self.file = {os.path.basename(path).split("_")[0]: path for path in made}
        self.older = {name: older(path, folder) for name, path in self.file.items()}

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.file[package], name).stdout.strip()

    def names(self, package, field):
        """The packages that a field names, without their versions."""
        return re.findall(r"(?:^|[,|] )([a-z0-9.+-]+)", self.field(package, field))

    def entries(self, package):
        """{path: (kind and mode, owner)}"""
        lines = [line.split(None, 5) for line in run("dpkg-deb", "-c", self.file[package]).stdout.splitlines()]
        return {line[5][1:]: (line[0], line[1]) for line in lines}

    def files(self, package):
        return sorted(path for path, (mode, _) in self.entries(package).items() if mode[0] != "d")


class Root:
    """A place to install into. `run` runs an installed program."""

    def __init__(self):
        self.path = scratch("root-")

    def state(self, package):
        text = self.dpkg("-s", package, check=False).stdout
        found = re.search(r"(?m)^Status: (.*)$", text)
        return found.group(1) if found else "unknown"

    def ours(self):
        """What there is under the names of the program."""
        paths = (os.path.relpath(os.path.join(folder, name), self.path)
                 for folder, folders, names in os.walk(os.path.join(self.path, "usr")) for name in names + folders)
        return sorted(path for path in paths if re.search(r"(?i)zarn", path))


class UnpackedRoot(Root):
    """An empty folder and a database that says which packages this machine has. Nobody's rights are needed."""

    def __init__(self, without=None):
        super().__init__()
        database = os.path.join(self.path, "var/lib/dpkg")
        for folder in ("info", "updates", "triggers"):
            os.makedirs(os.path.join(database, folder))
        fields = ("Package", "Version", "Architecture", "Multi-Arch", "Provides", "Maintainer", "Description")
        shown = "".join(f"{name}: ${{{name}}}\n" for name in fields[:-1]) + "Description: none\n\n"
        listed = run("dpkg-query", "-W", "-f", "${db:Status-Status}\n" + shown).stdout
        with open(os.path.join(database, "status"), "w", encoding="utf-8") as file:
            for block in listed.split("\n\n"):
                state, _, rest = block.partition("\n")
                name = re.search(r"(?m)^Package: (.*)$", rest)
                if state != "installed" or name.group(1) in (WINDOW, TOOLS) or without and without.match(name.group(1)):
                    continue
                file.write("Status: install ok installed\n" + re.sub(r"(?m)^[A-Z][\w-]+: \n", "", rest + "\n") + "\n")
                self.forget_files(database, rest, name.group(1))

    @staticmethod
    def forget_files(database, fields, name):
        if "Multi-Arch: same" in fields:
            name += ":" + re.search(r"(?m)^Architecture: (.*)$", fields).group(1)
        with open(os.path.join(database, "info", name + ".list"), "w", encoding="ascii"):
            pass

    def dpkg(self, *arguments, check=True):
        # Whatever this machine leaves out of the packages that it installs itself.
        return run("fakeroot", "dpkg", "--root=" + self.path, "--log=/dev/null", "--path-include=*", *arguments, check=check,
                   environment={**os.environ, **SYSTEM})

    def install(self, *files, check=True):
        return self.dpkg("-i", *files, check=check)

    def command(self, program):
        return [os.path.join(self.path, "usr/bin", program)]


class EmptyRoot(Root):
    """A root that Debian's own installer made, with apt and nothing else. Needs the rights to make one."""

    def __init__(self):
        super().__init__()
        sources = "/etc/apt/sources.list.d/debian.sources"
        with open("/etc/os-release", encoding="utf-8") as file:
            release = re.search(r"(?m)^VERSION_CODENAME=(.*)$", file.read()).group(1)
        run("mmdebstrap", "--variant=apt", "--mode=root", "--skip=cleanup/apt", release, self.path,
            *([sources] if os.path.exists(sources) else []), limit=900)
        self.dpkg("--version")

    def inside(self, *command):
        """Its own processes and devices, this machine's /tmp; gone with the command."""
        mounts = "".join(f"mount --rbind /{name} '{self.path}/{name}' && " for name in ("proc", "dev", "tmp"))
        return ["unshare", "-m", "sh", "-c", mounts + 'exec chroot "$0" "$@"', self.path, *command]

    def dpkg(self, *arguments, check=True):
        return run(*self.inside("dpkg", *arguments), check=check, environment={**os.environ, **SYSTEM}, limit=300)

    def install(self, *files, check=True):
        return run(*self.inside("apt-get", "-q", "-y", "--no-install-recommends", "install", *files), check=check,
                   environment={**os.environ, **SYSTEM}, limit=900)

    def command(self, program):
        return self.inside("/usr/bin/" + program)


def empty_root():
    """An empty root and None, or None and why none can be made here."""
    if os.getuid() != 0:
        return None, "only root may make one"
    try:
        return EmptyRoot(), None
    except (AssertionError, OSError) as problem:
        return None, str(problem).strip().splitlines()[-1]


class ContentTest(unittest.TestCase):
    def test_lintian_finds_neither_errors_nor_warnings(self):
        found = run("lintian", "--allow-root", "--show-overrides", "--tag-display-limit", "0", *PACKAGES.file.values(),
                    check=False).stdout.splitlines()
        overridden = sorted(line for line in found if line.startswith("O: "))
        self.assertEqual([line for line in found if not line.startswith(("O: ", "N:"))], [])
        self.assertEqual([line.split()[2] for line in overridden], ["initial-upload-closes-no-bugs"] * 2)

    def test_each_override_has_its_reason(self):
        with open(SOURCE + "/packaging/debian/lintian-overrides", encoding="utf-8") as file:
            lines = file.read().splitlines()
        for before, line in zip([""] + lines, lines):
            self.assertTrue(line.startswith("#") or before.startswith("# "), line)

    def test_dependencies_are_what_is_linked(self):
        self.assertTrue({"libqt6widgets6", "libqt6dbus6", "libplist3", "libxcb1", "ca-certificates", TOOLS} <= set(PACKAGES.names(WINDOW, "Depends")))
        tools = PACKAGES.names(TOOLS, "Depends")
        self.assertTrue({"libc6", "libcurl4", "libicu72", "libplist3", "libsecret-1-0", "libsodium23",
                         "ca-certificates"} <= set(tools), tools)
        self.assertEqual([name for name in tools if TOOLKIT.match(name)], [])

    def test_the_window_recommends_what_a_desktop_should_have(self):
        self.assertEqual(PACKAGES.names(WINDOW, "Recommends"), [
            "qt6-wayland", "gnome-keyring", "libkf5wallet-bin", "keepassxc", "xdg-desktop-portal-gtk",
            "xdg-desktop-portal-backend", "xdg-utils"])

    def test_the_version_is_that_of_the_program(self):
        shown = run(BUILD + "/zarn-actions", "--version").stdout
        number = re.search(r"Zarn Actions (\S+)", shown).group(1)
        for package in (WINDOW, TOOLS):
            self.assertEqual(PACKAGES.field(package, "Version"), re.sub(r"b(\d+)$", r"~b\1", number) + "-1")

    def test_each_program_and_module_is_in_its_package_with_its_page_and_completion(self):
        window, tools = PACKAGES.files(WINDOW), PACKAGES.files(TOOLS)
        self.assertEqual(set(window) & set(tools), set())
        for files, programs in ((window, ["zarn-actions"]), (tools, ["zarn-defaults", "zarn-keychain", "zarn-profile"])):
            self.assertEqual([os.path.basename(path) for path in files if path.startswith("/usr/bin/")], programs)
            for program in programs:
                self.assertIn(f"/usr/share/man/man1/{program}.1.gz", files)
                self.assertIn(f"/usr/share/bash-completion/completions/{program}", files)
                self.assertIn(f"/usr/share/zsh/vendor-completions/_{program}", files)
        self.assertEqual([path for path in window + tools if path.endswith(".so")],
                         [f"/usr/lib/zarn-actions/modules/zarn-{name}.so" for name in ("http", "keychain")])
        self.assertIn("/usr/share/doc/zarn-actions-tools/for-actions.md", tools)
        for example in ("server-version.sh", "server_version.py", "cpp/CMakeLists.txt", "cpp/server_version.cpp"):
            self.assertIn("/usr/share/doc/zarn-actions-tools/examples/" + example, tools)
        self.assertIn("/usr/share/doc/zarn-actions/security.md", window)

    def test_the_catalogue_shows_pictures_that_are_in_the_documents(self):
        with open(BUILD + "/generated/com.zarn.ZarnActions.metainfo.xml", encoding="utf-8") as file:
            pictures = re.findall(r"<image>https://.*/(.*)</image>", file.read())
        self.assertEqual(len(pictures), 3)
        for picture in pictures:
            self.assertIn("/usr/share/doc/zarn-actions/pictures/" + picture, PACKAGES.files(WINDOW))

    def test_owners_and_modes_are_those_of_a_system(self):
        for package in (WINDOW, TOOLS):
            for path, (mode, owner) in PACKAGES.entries(package).items():
                expected = "-rwxr-xr-x" if path.startswith("/usr/bin/") else "-rw-r--r--"
                self.assertEqual((mode, owner), ("drwxr-xr-x" if mode[0] == "d" and path[-1] == "/" else
                                                 "drwxr-xr-x" if path == "/usr/bin/" else expected, "root/root"), path)

    def test_no_maintainer_script_runs(self):
        for package in (WINDOW, TOOLS):
            members = run("dpkg-deb", "--ctrl-tarfile", PACKAGES.file[package])
            self.assertNotRegex(members.stdout, r"(pre|post)(inst|rm)")

    def test_links_between_the_documents_lead_to_installed_files(self):
        for package in (WINDOW, TOOLS):
            files = PACKAGES.files(package)
            for page in (path for path in files if path.endswith(".md")):
                with open(SOURCE + "/docs/" + os.path.basename(page), encoding="utf-8") as file:
                    links = re.findall(r"\]\((?!https?:)([^)#]+)", file.read())
                for link in links:
                    self.assertIn(os.path.normpath(os.path.join(os.path.dirname(page), link)), files, page)


class LifeTest(unittest.TestCase):
    def home(self):
        folder = scratch("home-")
        kept = {"HOME": folder, "XDG_CONFIG_HOME": folder + "/config", "XDG_DATA_HOME": folder + "/data",
                "XDG_STATE_HOME": folder + "/state"}
        return {**os.environ, **kept}

    def check_programs(self, root, environment):
        """Each installed program works, and finds what the one before it stored."""
        def answer(program, *arguments):
            return run(*root.command(program), *arguments, environment=environment).stdout
        self.assertRegex(answer("zarn-actions", "--version"), r"\AZarn Actions \d")
        self.assertRegex(answer("zarn-actions", "--diagnose", "--keychain=file"), r"(?m)^result +all is well$")
        answer("zarn-defaults", "write", SETTINGS, "key", "-int", "7")
        self.assertEqual(answer("zarn-defaults", "--json", "read", SETTINGS), '{\n    "key": 7\n}\n')
        self.assertEqual(answer("zarn-profile", "list"), "")
        self.assertEqual(answer("zarn-keychain", "--keychain=file", "--json", "list").splitlines()[-2:], ["[", "]"])

    def register(self, root):
        """The demonstration server is registered in the window of the installed program."""
        folder = scratch("programs-")
        for name in ("zarn-pro-demo", "generated"):
            os.symlink(f"{BUILD}/{name}", f"{folder}/{name}")
        for program in ("zarn-actions", "zarn-profile"):
            with open(f"{folder}/{program}", "w", encoding="utf-8") as file:
                words = " ".join("'" + word.replace("'", "'\\''") + "'" for word in root.command(program))
                file.write(f'#!/bin/sh\nexec {words} "$@"\n')
            os.chmod(f"{folder}/{program}", 0o755)
        shown = run("/usr/bin/python3", SOURCE + "/tests/end_to_end/demonstration.py", folder, folder).stdout
        self.assertIn("Demonstration server was successfully set", shown)
        self.assertIn("ZPMA-zortcuts (zortcuts): secret ********", shown)

    def test_the_packages_live_from_installing_to_purging(self):
        root, environment = ROOT or UnpackedRoot(), self.home()
        before = root.ours()
        root.install(PACKAGES.older[TOOLS])
        self.assertEqual(root.state(TOOLS), "install ok installed")
        self.assertEqual(root.state(WINDOW), "unknown")
        root.install(PACKAGES.older[WINDOW])
        for package in (WINDOW, TOOLS):
            self.assertTrue(os.path.exists(f"{root.path}/usr/share/doc/{package}/dropped"))
        self.check_programs(root, environment)

        root.install(PACKAGES.file[WINDOW], PACKAGES.file[TOOLS])
        for package in (WINDOW, TOOLS):
            self.assertEqual(root.state(package), "install ok installed")
            self.assertEqual(root.dpkg("-V", package).stdout, "")
            self.assertFalse(os.path.exists(f"{root.path}/usr/share/doc/{package}/dropped"))
            for path in PACKAGES.files(package):
                self.assertTrue(os.path.exists(root.path + path), path)
        kept = run(*root.command("zarn-defaults"), "read", SETTINGS, "key", environment=environment).stdout
        self.assertEqual(kept, "7\n")
        self.check_programs(root, environment)
        self.register(root)

        root.dpkg("-r", WINDOW)
        self.assertFalse(os.path.exists(root.path + "/usr/bin/zarn-actions"))
        self.assertEqual(run(*root.command("zarn-defaults"), "list", SETTINGS, environment=environment).stdout, "key\n")
        root.dpkg("-r", TOOLS)
        root.dpkg("-P", WINDOW, TOOLS)
        self.assertEqual([root.state(WINDOW), root.state(TOOLS)], ["unknown", "unknown"])
        self.assertEqual(root.ours(), before)
        stored = environment["XDG_CONFIG_HOME"] + f"/zarn-actions/{SETTINGS}.plist"
        self.assertTrue(stat.S_ISREG(os.stat(stored).st_mode))

    def test_the_tools_need_no_toolkit_and_the_window_does(self):
        root = UnpackedRoot(without=TOOLKIT)
        root.install(PACKAGES.file[TOOLS])
        self.assertEqual(root.state(TOOLS), "install ok installed")
        refused = root.install(PACKAGES.file[WINDOW], check=False)
        self.assertNotEqual(refused.returncode, 0)
        self.assertRegex(refused.stdout, r"depends on libqt6widgets6")


if __name__ == "__main__":
    ROOT, SKIPPED = empty_root() if LONG else (None, None)
    if SKIPPED:
        print(f"packages_test: SKIPPED the empty root, used an unpacked one: {SKIPPED}")
    PACKAGES = Packages()
    RESULT = unittest.main(exit=False).result
    unittest.doModuleCleanups()
    sys.exit(1 if not RESULT.wasSuccessful() else 77 if SKIPPED else 0)

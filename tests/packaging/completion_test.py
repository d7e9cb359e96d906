#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""What bash and zsh complete, asked as a user does: with the Tab key, in a terminal.

    completion_test.py BUILD_FOLDER SOURCE_FOLDER
"""

import os
import plistlib
import pty
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

BUILD, SOURCE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
FILES = os.path.join(SOURCE, "packaging/completions")
LIMIT = 60
DOMAINS = ["com.zarn.ZarnActions", "group.Q7X2M9K4TA.zarnactions", "group.R3V8N1P6WB.zarnie.SharedZPMA"]
DEFAULTS = ["--help", "--json", "--version", "-V", "-h", "delete", "list", "read", "write"]
TYPES = ["-bool", "-data", "-date", "-float", "-int", "-string"]

# Tab completes, Control-Y puts every candidate into the line, and Control-T writes the line into the file ANSWER.
BASH = r"""
PS1=
. "$FILES/zarn-actions.bash"
bind 'set bell-style none'
bind '"\C-y": insert-completions'
_answer() { printf '%s' "$READLINE_LINE" > "$ANSWER.new"; mv "$ANSWER.new" "$ANSWER"; READLINE_LINE=; }
bind -x '"\C-t": _answer'
: > "$ANSWER"
"""
ZSH = r"""
PS1=
setopt no_beep
fpath=("$FILES" $fpath)
autoload -Uz compinit && compinit -u -d "$HOME/zcompdump"
_answer() { print -rn -- "$BUFFER" > "$ANSWER.new"; mv "$ANSWER.new" "$ANSWER"; BUFFER= }
zle -N _answer
bindkey '^I' complete-word
bindkey '^T' _answer
: > "$ANSWER"
"""


class Shell:
    """An interactive shell that has read the completions and nothing of the user's own."""

    def __init__(self, command, script, environment):
        self.answer = os.path.join(environment["HOME"], "answer")
        with open(os.path.join(environment["HOME"], "script"), "w", encoding="ascii") as file:
            file.write(script)
        environment = {**environment, "ANSWER": self.answer, "FILES": FILES, "TERM": "dumb"}
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.execvpe(command[0], command, environment)
        os.set_blocking(self.terminal, False)
        self.send(f". {environment['HOME']}/script\n")
        self.wait()

    def send(self, text):
        os.write(self.terminal, text.encode())

    def drained(self):
        try:
            return os.read(self.terminal, 65536)
        except BlockingIOError:
            return b""

    def wait(self):
        """Until the shell has written its answer; what it shows meanwhile is read off."""
        shown, deadline = b"", time.monotonic() + LIMIT
        while not os.path.exists(self.answer):
            if time.monotonic() > deadline:
                raise AssertionError(f"the shell wrote no answer in {LIMIT} s; it shows {shown!r}")
            shown += self.drained()
            time.sleep(0.01)
        with open(self.answer, encoding="utf-8") as file:
            text = file.read()
        os.unlink(self.answer)
        return text

    def line(self, typed, key="\t"):
        """The command line after the key."""
        self.send(typed + key + "\x14")
        return self.wait()

    def end(self):
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


class CompletionTest(unittest.TestCase):
    def setUp(self):
        home = tempfile.mkdtemp(prefix="completion-")
        self.addCleanup(shutil.rmtree, home)
        self.home = home
        self.environment = {"HOME": home, "XDG_CONFIG_HOME": home, "PATH": BUILD + ":/usr/bin:/bin",
                            "LC_ALL": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}

    def bash(self):
        shell = Shell(["bash", "--norc", "--noprofile", "-i"], BASH, self.environment)
        self.addCleanup(shell.end)
        return shell

    def offers(self, shell, typed, *expected):
        """The candidates in the place of the last word."""
        kept = typed[:typed.rfind(" ") + 1]
        line = shell.line(typed, "\x19")
        self.assertTrue(line.startswith(kept), line)
        self.assertEqual(sorted(line[len(kept):].split()), sorted(expected), typed)

    def test_bash_completes_the_options_of_the_window(self):
        shell = self.bash()
        self.offers(shell, "zarn-actions ", "--diagnose", "--help", "--keychain=", "--version", "-V",
                    "-forceBasicAuth", "-h")
        self.assertEqual(shell.line("zarn-actions --di"), "zarn-actions --diagnose ")
        self.assertEqual(shell.line("zarn-actions --k"), "zarn-actions --keychain=")

    def test_bash_completes_the_kind_of_keychain(self):
        shell = self.bash()
        for program in ("zarn-actions", "zarn-keychain"):
            self.assertEqual(shell.line(program + " --keychain=f"), program + " --keychain=file ")
            self.offers(shell, program + " --keychain=", "--keychain=file", "secret-service")
        self.assertEqual(shell.line("zarn-keychain --ac"), "zarn-keychain --access-group=")
        self.assertEqual(shell.line("zarn-keychain --access-group=f"), "zarn-keychain --access-group=f")

    def test_bash_completes_the_commands_and_domains_of_zarn_defaults(self):
        shell = self.bash()
        self.offers(shell, "zarn-defaults ", *DEFAULTS)
        self.offers(shell, "zarn-defaults --json ", "list", "read")
        for command in ("list", "--json read", "write", "delete"):
            self.offers(shell, f"zarn-defaults {command} ", *DOMAINS)
        self.offers(shell, "zarn-defaults write com.zarn.ZarnActions key -", *TYPES)
        self.offers(shell, "zarn-defaults write com.zarn.ZarnActions key -bool ", "true", "false")
        self.offers(shell, "zarn-defaults write com.zarn.ZarnActions key -int ")

    def test_bash_completes_the_keys_that_are_there_and_runs_nothing_that_they_name(self):
        trap = os.path.join(self.home, "trap")
        for key in ("forceBasicAuth", "agreedToTermsOfUse", f"$(touch {trap})"):
            subprocess.run([os.path.join(BUILD, "zarn-defaults"), "write", "com.zarn.ZarnActions", key, "-int", "1"],
                           env=self.environment, check=True, timeout=LIMIT)
        shell = self.bash()
        self.assertEqual(shell.line("zarn-defaults read com.zarn.ZarnActions fo"),
                         "zarn-defaults read com.zarn.ZarnActions forceBasicAuth ")
        self.assertIn("agreedToTermsOfUse", shell.line("zarn-defaults delete com.zarn.ZarnActions ", "\x19"))
        self.assertEqual(shell.line("zarn-defaults list com.zarn.ZarnActions fo"),
                         "zarn-defaults list com.zarn.ZarnActions fo")
        self.assertFalse(os.path.exists(trap))

    def test_bash_completes_the_commands_and_options_of_zarn_keychain(self):
        self.offers(self.bash(), "zarn-keychain ", "--access-group=", "--force", "--help", "--json",
                    "--keychain=", "--version", "-V", "-h", "list", "show")

    def register(self, *names):
        """Servers as they are stored."""
        servers = {name: {"server": "https://zarn.example"} for name in names}
        path = os.path.join(self.home, "zarn-actions", "group.R3V8N1P6WB.zarnie.SharedZPMA.plist")
        os.makedirs(os.path.dirname(path), 0o700, exist_ok=True)
        with open(path, "wb") as file:
            plistlib.dump({"serversDict": servers}, file)

    def test_bash_completes_the_commands_options_and_servers_of_zarn_profile(self):
        trap = os.path.join(self.home, "trap")
        self.register("Berlin", "Bonn am Rhein", f"$(touch {trap})")
        shell = self.bash()
        self.offers(shell, "zarn-profile ", "--help", "--keychain=", "--version", "-V", "-h", "add", "api", "check",
                    "list", "remove", "set", "show", "terms", "token", "use")
        self.offers(shell, "zarn-profile add x -", "--client-id", "--help", "--if-missing", "--url", "--user", "-h")
        self.offers(shell, "zarn-profile --keychain=file show -", "--force", "--help", "--json", "--reveal", "-h")
        self.offers(shell, "zarn-profile api ", "GET", "POST", "PUT")
        for line in ("use Be", "--keychain=file use Be", "show Be", "set Be", "remove --yes Be", "token Be"):
            self.assertEqual(shell.line("zarn-profile " + line), f"zarn-profile {line}rlin ")
        self.assertEqual(shell.line("zarn-profile use Bo"), "zarn-profile use Bonn\\ am\\ Rhein ")
        shell.line("zarn-profile use ", "\x19")
        self.assertFalse(os.path.exists(trap))

    def test_zsh_completes_too(self):
        self.register("Berlin", "Bonn am Rhein")
        shell = Shell(["zsh", "-f", "-i"], ZSH, self.environment)
        self.addCleanup(shell.end)
        for typed, line in (("zarn-actions --di", "zarn-actions --diagnose "),
                            ("zarn-actions --keychain=f", "zarn-actions --keychain=file "),
                            ("zarn-keychain sh", "zarn-keychain show "),
                            ("zarn-keychain --fo", "zarn-keychain --force "),
                            ("zarn-defaults --js", "zarn-defaults --json "),
                            ("zarn-profile rem", "zarn-profile remove "),
                            ("zarn-profile --keychain=f", "zarn-profile --keychain=file "),
                            ("zarn-profile show --rev", "zarn-profile show --reveal "),
                            ("zarn-profile use Be", "zarn-profile use Berlin "),
                            ("zarn-profile use Bo", "zarn-profile use Bonn\\ am\\ Rhein "),
                            ("zarn-profile api P", "zarn-profile api P"),
                            ("zarn-defaults wr", "zarn-defaults write "),
                            ("zarn-defaults write com", "zarn-defaults write com.zarn.ZarnActions "),
                            ("zarn-defaults write com.zarn.ZarnActions k -bo",
                             "zarn-defaults write com.zarn.ZarnActions k -bool "),
                            ("zarn-defaults write com.zarn.ZarnActions k -bool t",
                             "zarn-defaults write com.zarn.ZarnActions k -bool true ")):
            self.assertEqual(shell.line(typed), line)


if __name__ == "__main__":
    unittest.main()

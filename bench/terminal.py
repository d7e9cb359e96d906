#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""zarn-profile beside what a script would do without it.

    with_desktop --no-x --no-keyring terminal.py BUILD_FOLDER

Both sides run in turn, each as a process of its own; medians. From Python's time its own start is taken off. Exit
status 1 when a limit is not kept.
"""

import json
import os
import statistics
import subprocess
import sys
import time

BUILD = os.path.abspath(sys.argv[1])
PROGRAM = os.path.join(BUILD, "zarn-profile")
CLIENT, SECRET = "demo-client", "demo-client-secret"
READER = """
import os, plistlib
folder = os.environ["XDG_CONFIG_HOME"] + "/zarn-actions/group."
with open(folder + "R3V8N1P6WB.zarnie.SharedZPMA.plist", "rb") as file:
    profiles = plistlib.load(file)["serversDict"]
with open(folder + "Q7X2M9K4TA.zarnactions.plist", "rb") as file:
    current = plistlib.load(file)["currentServer"]
for name in sorted(profiles):
    print("*" if name == current else " ", name, profiles[name]["server"])
"""


def milliseconds(command):
    started = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True, timeout=30)
    return 1000 * (time.perf_counter() - started)


def medians(rounds, *commands):
    """Of each command, the commands in turn."""
    times = [[milliseconds(command) for command in commands] for _ in range(rounds)]
    return [statistics.median(column) for column in zip(*times)]


def row(title, ours, baseline, most):
    ratio = ours / baseline
    verdict = "ok" if ratio <= most else f"OVER {most}"
    print(f"{title:<44} {ours:10.1f} ms {baseline:10.1f} ms   {ratio:5.2f}  {verdict}")
    return ratio <= most


def main():
    scratch = os.environ["HOME"]
    ca_file = scratch + "/ca.pem"
    server = subprocess.Popen([os.path.join(BUILD, "zarn-pro-demo"), "--print-json", "--lifetime", "300", "--ca-file",
                               ca_file], stdout=subprocess.PIPE, text=True)
    try:
        url = json.loads(server.stdout.readline())["https_url"].rstrip("/")
        os.environ.update(SSL_CERT_FILE=ca_file, no_proxy="127.0.0.1")
        subprocess.run([PROGRAM, "terms", "--accept"], stdout=subprocess.DEVNULL, check=True, timeout=30)
        for number in range(10):
            subprocess.run([PROGRAM, "add", f"Server {number}", "--url", url, "--client-id", CLIENT],
                           input=SECRET.encode(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True,
                           timeout=30)
        listing, showing, reading, start = medians(41, [PROGRAM, "list"], [PROGRAM, "show"],
                                                   ["/usr/bin/python3", "-sE", "-c", READER],
                                                   ["/usr/bin/python3", "-sE", "-c", ""])
        is_kept = row("zarn-profile list / Python reads the same", listing, reading - start, 1.5)
        is_kept &= row("zarn-profile show / Python reads the same", showing, reading - start, 1.5)
        is_kept &= row("zarn-profile list / 15 ms", listing, 15, 1)
        is_kept &= row("zarn-profile show / 15 ms", showing, 15, 1)
        form = scratch + "/form"
        with open(form, "w", encoding="ascii") as file:
            file.write(f"grant_type=client_credentials&client_id={CLIENT}&client_secret={SECRET}")
        token, curl = medians(41, [PROGRAM, "--keychain=file", "token"],
                              ["curl", "--silent", "--fail", "--cacert", ca_file, "--data", "@" + form,
                               url + "/api/oauth/token"])
        is_kept &= row("zarn-profile token / curl", token, curl, 1.3)
    finally:
        server.kill()
        server.wait()
    return 0 if is_kept else 1


if __name__ == "__main__":
    sys.exit(main())

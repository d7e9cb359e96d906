#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the version of the current Zarn Pro server, or of the one that is named.

    server_version.py [DISPLAY NAME]

Needs zarn-profile, and the standard library only. Exit status: that of zarn-profile; 1 when the
server refuses, 3 when it cannot be reached.
"""

import http.client
import json
import subprocess
import sys
import urllib.error
import urllib.parse
import urllib.request

REFUSED, UNREACHABLE = 1, 3


class Failure(Exception):
    def __init__(self, status, message=None):
        super().__init__(message)
        self.status = status


class NoRedirect(urllib.request.HTTPRedirectHandler):
    """Otherwise the token would follow a redirect to any server."""

    def redirect_request(self, *_):
        return None


def zarn_profile(*arguments):
    """What the program prints. It reports its failures on standard error itself."""
    done = subprocess.run(["zarn-profile", *arguments], stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        raise Failure(done.returncode)
    return done.stdout.decode()


def get(server, endpoint, token):
    url = urllib.parse.quote(f"{server.rstrip('/')}/api/v1/{endpoint}", safe="%/:?#[]@!$&'()*+,;=")
    request = urllib.request.Request(url, headers={
        "Authorization": "Bearer " + token, "Accept": "application/json"})
    try:
        with urllib.request.build_opener(NoRedirect).open(request, timeout=60) as reply:
            return json.load(reply)
    except urllib.error.HTTPError as error:
        raise Failure(REFUSED, f"the server refuses: HTTP status {error.code}") from None
    except (OSError, http.client.HTTPException) as error:
        raise Failure(UNREACHABLE, f"the server cannot be reached: {error}") from None
    except ValueError:
        raise Failure(REFUSED, "the server's reply is not JSON") from None


def main(names):
    profile = json.loads(zarn_profile("show", "--json", "--", *names))
    token = zarn_profile("token", "--", *names).rstrip("\n")
    reply = get(profile["server"], "zarn-pro-version", token)
    version = reply.get("version") if isinstance(reply, dict) else None
    if not isinstance(version, str):
        raise Failure(REFUSED, "the server's reply has no version")
    print(version)


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except Failure as failure:
        if failure.args[0]:
            print("server-version:", failure, file=sys.stderr)
        sys.exit(failure.status)

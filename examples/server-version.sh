#!/bin/sh
# SPDX-License-Identifier: MIT
# Prints the version of the current Zarn Pro server, or of the one that is named.
#   server-version.sh [DISPLAY NAME]
# Needs zarn-profile, curl and jq. Exit status: that of zarn-profile; 1 when the server refuses, 3
# when it cannot be reached.
set -eu

fail() {
    printf 'server-version: %s\n' "$2" >&2
    exit "$1"
}

# A failure of zarn-profile has been reported on standard error: pass its exit status on.
profile=$(zarn-profile show --json -- "$@") || exit
server=$(printf '%s' "$profile" | jq -r .server)
token=$(zarn-profile token -- "$@") || exit

# The token goes through standard input: a command line is public. A redirect is not followed, so
# the token goes to this server only. The status follows the reply, on a line of its own.
reply=$(printf 'Authorization: Bearer %s\n' "$token" |
    curl --silent --show-error --max-time 60 --header @- --header 'Accept: application/json' \
        --write-out '\n%{http_code}' -- "${server%/}/api/v1/zarn-pro-version") ||
    fail 3 "the server cannot be reached"
status=${reply##*
}
[ "$status" = 200 ] || fail 1 "the server refuses: HTTP status $status"

version=$(printf '%s' "${reply%
*}" | jq -r '.version | strings' 2>/dev/null) && [ -n "$version" ] || fail 1 "the server's reply has no version"
printf '%s\n' "$version"

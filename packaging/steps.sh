# SPDX-License-Identifier: MIT
# What ./run and ./test share: installing packages, and steps with a progress display.
# Sourced by bash scripts that stand in the top folder.

log_folder=build/logs
mkdir -p "$log_folder"

say() { printf '%s\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# step TITLE COMMAND...: runs the command with its output in a log file. On a terminal one line shows
# the title, the time and the newest line of output; elsewhere the title, and a line every 30 s.
step() {
    local title=$1 log started=$SECONDS shown=$SECONDS status
    shift
    log="$log_folder/$(printf '%s' "$title" | tr -cs 'A-Za-z0-9' '-' | sed 's/-*$//').log"
    "$@" >"$log" 2>&1 </dev/null &
    local job=$!
    [ -t 1 ] || say "$title ..."
    while kill -0 "$job" 2>/dev/null; do
        if [ -t 1 ]; then
            printf '\r\033[K%s  %ds  %s' "$title" $((SECONDS - started)) \
                "$(tail -n 1 "$log" | tr -d '\r' | cut -c1-60)"
            sleep 0.5
        else
            sleep 0.2
            if [ $((SECONDS - shown)) -ge 30 ]; then
                shown=$SECONDS
                say "  $title: $((SECONDS - started)) s, $(tail -n 1 "$log" | cut -c1-100)"
            fi
        fi
    done
    status=0
    wait "$job" || status=$?
    if [ -t 1 ]; then printf '\r\033[K'; fi
    if [ "$status" -eq 0 ]; then
        say "$title: done in $((SECONDS - started)) s"
        return 0
    fi
    say "$title: FAILED (exit $status). The end of $log:"
    tail -n 40 "$log"
    return "$status"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo -n "$@" || sudo "$@"
    else fail "packages are missing ($missing_packages) and neither root nor sudo is at hand: install them, then run this again"
    fi
}

install_packages() {
    export DEBIAN_FRONTEND=noninteractive
    # Missing packages must not bring a service up on the machine.
    as_root apt-get -q update && as_root apt-get -q install -y --no-install-recommends "$@"
}

# need_packages GROUP...: installs what is missing of the groups in packaging/packages.txt. Asks dpkg
# once, so that a machine that has everything is not slowed.
need_packages() {
    local groups=" $* " group name rest wanted=()
    while read -r group name rest; do
        case "$groups" in *" $group "*) wanted+=("$name") ;; esac
    done < <(grep -v '^#' packaging/packages.txt)
    command -v dpkg-query >/dev/null || fail "this is not a Debian system: install by hand: ${wanted[*]}"
    local installed
    # dpkg-query fails when it does not know one of the names; what it knows it has printed then.
    installed=$({ dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || :; } |
        sed -n 's/^installed //p')
    missing_packages=
    for name in "${wanted[@]}"; do
        grep -qx -- "$name" <<<"$installed" || missing_packages="$missing_packages $name"
    done
    [ -z "$missing_packages" ] && return 0
    say "Missing packages:$missing_packages"
    # shellcheck disable=SC2086
    step "Installing packages" install_packages $missing_packages ||
        fail "the packages could not be installed:$missing_packages"
}

# build PRESET [CMAKE_OPTION...]: configures and builds.
build() {
    local preset=$1
    shift
    step "Configuring ($preset)" cmake --preset "$preset" "$@" || return
    NINJA_STATUS='[%f/%t] ' step "Building ($preset)" cmake --build "build/$preset"
}

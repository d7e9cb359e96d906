# SPDX-License-Identifier: MIT
# Completion of zarn-actions, zarn-defaults, zarn-keychain and zarn-profile for bash. Needs nothing but bash.

# Offers the words that begin with what was typed. Not compgen -W, which would expand their "$(...)".
_zarn_offer()
{
    local typed=$1 word
    shift
    for word; do
        [[ $word != "$typed"* ]] || COMPREPLY+=("$(printf %q "$word")")
    done
    [[ ${COMPREPLY[0]} != *= ]] || compopt -o nospace
}

# The kinds of keychain behind "--keychain=", which bash takes for three words.
_zarn_keychain_kinds()
{
    local sign=$((COMP_CWORD - 1)) typed=$2
    [[ $3 != --keychain ]] || sign=$COMP_CWORD typed=
    [[ ${COMP_WORDS[sign]} == = && ${COMP_WORDS[sign - 1]} == --keychain ]] || return 1
    _zarn_offer "$typed" secret-service file
}

_zarn_actions()
{
    _zarn_keychain_kinds "$@" ||
        _zarn_offer "$2" -h --help -V --version --diagnose --keychain= -forceBasicAuth
}

_zarn_defaults()
{
    local first=1
    [[ ${COMP_WORDS[1]} == --json ]] && first=2
    local verb=${COMP_WORDS[first]}
    case $((COMP_CWORD - first)) in
    -1 | 0)
        if [[ $first -eq 2 ]]; then
            _zarn_offer "$2" list read
        else
            _zarn_offer "$2" list read write delete --json -h --help -V --version
        fi
        ;;
    1)
        _zarn_offer "$2" com.zarn.ZarnActions group.R3V8N1P6WB.zarnie.SharedZPMA \
            group.Q7X2M9K4TA.zarnactions
        ;;
    2)
        [[ $verb != list ]] || return
        local -a keys
        mapfile -t keys < <(zarn-defaults list "${COMP_WORDS[first + 1]}" 2>/dev/null)
        _zarn_offer "$2" "${keys[@]}"
        ;;
    3)
        [[ $verb != write ]] || _zarn_offer "$2" -string -int -float -bool -date -data
        ;;
    4)
        [[ $verb != write || ${COMP_WORDS[first + 3]} != -bool ]] || _zarn_offer "$2" true false
        ;;
    esac
}

# No service and no account: to list them could open the prompt of a locked keyring.
_zarn_keychain()
{
    _zarn_keychain_kinds "$@" ||
        _zarn_offer "$2" list show --keychain= --access-group= --force --json -h --help -V --version
}

# The names of the servers that begin with what was typed.
_zarn_servers()
{
    local -a lines
    mapfile -t lines < <(zarn-profile list 2>/dev/null)
    lines=("${lines[@]%%$'\t'*}")
    _zarn_offer "$1" "${lines[@]#??}"
}

_zarn_profile()
{
    _zarn_keychain_kinds "$@" && return
    local word verb= place
    for ((place = 1; place < COMP_CWORD; place++)); do
        word=${COMP_WORDS[place]}
        case $word in
        -* | = | secret-service | file) ;;
        *) verb=$word && break ;;
        esac
    done
    local -a options=(-h --help)
    case $verb in
    "")
        _zarn_offer "$2" add set list use remove check show token api terms --keychain= -V --version "${options[@]}"
        return
        ;;
    add) options+=(--url --user --client-id --if-missing) ;;
    set) options+=(--user --client-id) ;;
    remove) options+=(-y --yes) ;;
    list) options+=(--json) ;;
    check) options+=(--all --json) ;;
    show) options+=(--json --reveal --force) ;;
    token) options+=(--json) ;;
    api) options+=(--data) ;;
    terms) options+=(--accept --json) ;;
    esac
    if [[ $2 == -* ]]; then
        _zarn_offer "$2" "${options[@]}"
    elif [[ $3 == --data ]]; then
        compopt -o default
    elif [[ $verb == api && $COMP_CWORD -eq $((place + 1)) ]]; then
        _zarn_offer "$2" GET POST PUT
    elif [[ $verb =~ ^(set|use|remove|check|show|token)$ ]]; then
        _zarn_servers "$2"
    fi
}

complete -F _zarn_actions zarn-actions
complete -F _zarn_defaults zarn-defaults
complete -F _zarn_keychain zarn-keychain
complete -F _zarn_profile zarn-profile

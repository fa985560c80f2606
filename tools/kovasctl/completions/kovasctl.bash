# SPDX-License-Identifier: MIT
# Completion of kovasctl for bash.

# Sets "words" to the words up to the one that is typed. Bash takes "--eol=cr" for three of them.
_kovasctl_split() {
    local i
    words=()
    for ((i = 0; i <= COMP_CWORD; ++i)); do
        if [ "${COMP_WORDS[i]}" = = ] && [[ ${COMP_WORDS[i - 1]} == --* ]]; then
            [ "$i" -lt "$COMP_CWORD" ] || words+=('')
        else
            words+=("${COMP_WORDS[i]}")
        fi
    done
}

# Ports that are there now, through the adapter that the command line names.
_kovasctl_ports() {
    local i adapter=()
    for ((i = 1; i < ${#words[@]} - 1; ++i)); do
        [ "${words[i]}" = --adapter ] && adapter=(--adapter "${words[i + 1]}")
    done
    kovasctl "${adapter[@]}" list --names 2>/dev/null
}

_kovasctl_scenarios() {
    kovasctl sim --list 2>/dev/null | cut -d ' ' -f 1
}

# Sets COMPREPLY to those of the words, one a line, that begin with what is typed.
_kovasctl_offer() {
    local word
    COMPREPLY=()
    while IFS= read -r word; do
        [[ -n $word && $word == "$current"* ]] && COMPREPLY+=("$(printf %q "$word")")
    done
}

_kovasctl_options() {
    case $1 in
    list) echo --names ;;
    watch) printf '%s\n' --count --timeout --initial ;;
    term) printf '%s\n' --line --echo --hex --log --eol --escape --no-reconnect ;;
    send) printf '%s\n' --file --hex --escapes --eol --timeout --line ;;
    receive)
        printf '%s\n' --count --idle-timeout --timeout --until --send --escapes --eol --line
        ;;
    doctor) echo --open ;;
    check-adapter)
        printf '%s\n' --port --stalled --unplug --plug --rule --timeout --write-bound --junit --list
        ;;
    stats) printf '%s\n' --pid --interval --once ;;
    sim)
        printf '%s\n' --seed --speed --events --recording --stop --check --list --do --pid --dir
        ;;
    esac
    printf '%s\n' --adapter --log-dir --json --help
    [ -n "$1" ] || echo --version
}

# Which options are followed by a word of their own; "--hex" is, of send alone.
_kovasctl_takes_value() {
    case $1 in
    --adapter | --log-dir | --count | --timeout | --line | --log | --eol | --escape | --file) ;;
    --idle-timeout | --until | --send | --interval) ;;
    --seed | --speed | --events | --recording | --do | --pid | --dir) ;;
    --port | --stalled | --unplug | --plug | --rule | --write-bound | --junit) ;;
    --hex) [ "$2" = send ] ;;
    *) return 1 ;;
    esac
}

_kovasctl() {
    local words
    _kovasctl_split
    local last=$((${#words[@]} - 1))
    local current=${words[last]} previous=${words[last - 1]}
    local command='' operands=0 i
    for ((i = 1; i < last; ++i)); do
        if _kovasctl_takes_value "${words[i]}" "$command"; then
            ((++i))
        elif [[ ${words[i]} != -* ]]; then
            if [ -z "$command" ]; then command=${words[i]}; else ((++operands)); fi
        fi
    done
    if _kovasctl_takes_value "$previous" "$command"; then
        case $previous in
        --adapter)
            _kovasctl_offer < <(printf '%s\n' linux virtual spy; compgen -d -- "$current")
            ;;
        --log-dir | --dir) _kovasctl_offer < <(compgen -d -- "$current") ;;
        --file | --log | --events | --recording | --junit) _kovasctl_offer < <(compgen -f -- "$current") ;;
        --eol) _kovasctl_offer < <(printf '%s\n' cr lf crlf) ;;
        *) COMPREPLY=() ;;
        esac
    elif [[ $current == -* ]]; then
        _kovasctl_offer < <(_kovasctl_options "$command")
    elif [ -z "$command" ]; then
        _kovasctl_offer < <(printf '%s\n' list watch term send receive doctor \
            adapter-info check-adapter stats sim)
    elif [ "$operands" -gt 0 ] && [ "$command" != sim ]; then
        COMPREPLY=()
    else
        case $command in
        term | send | receive | doctor) _kovasctl_offer < <(_kovasctl_ports) ;;
        adapter-info | check-adapter)
            _kovasctl_offer < <(printf '%s\n' linux virtual spy; compgen -d -- "$current")
            ;;
        sim) _kovasctl_offer < <(_kovasctl_scenarios; compgen -f -- "$current") ;;
        *) COMPREPLY=() ;;
        esac
    fi
}

complete -F _kovasctl kovasctl

# bash completion for oru-tlm-tool, oru-serverreport-tool and oru-snapshot

_oru_switches() {
    local word=${COMP_WORDS[COMP_CWORD]}
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word")
}

_oru_tlm_tool() {
    _oru_switches '--stream-max-stats --system-info --identity-info --help'
}

_oru_serverreport_tool() {
    _oru_switches '--list-streams --stream-quotas --list-output --list-channels --list-resolutions
        --list-available-resolutions --list-inputs --help'
}

_oru_files() {
    local word=${COMP_WORDS[COMP_CWORD]}
    mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X "!*.$1" -- "$word")
}

_oru_snapshot() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} options=--help out=json
    if ((COMP_CWORD == 1)); then
        _oru_switches 'check record diff show graph metrics --help --version'
        return
    fi
    case ${COMP_WORDS[1]} in
        check | graph) ;;
        show) options='--wide --problems --stream --color --help' ;;
        record) options='--output --about --redact --redact-key --help' ;;
        diff) options='--all --color --help' ;;
        metrics) options='--output --help' out=prom ;;
        *) return ;;
    esac
    case $before in
        -o | --output) _oru_files $out ;;
        --about | --stream) ;;
        --color) _oru_switches 'always auto never' ;;
        --redact-key) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        *)
            if [[ $word == -* ]]; then
                _oru_switches "$options"
            else
                _oru_files json
            fi
            ;;
    esac
}

complete -F _oru_tlm_tool oru-tlm-tool
complete -F _oru_serverreport_tool oru-serverreport-tool
complete -o filenames -F _oru_snapshot oru-snapshot

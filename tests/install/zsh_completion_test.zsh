#!/bin/zsh -f
# Types command lines into an interactive zsh, presses a key that completes, and compares the resulting
# line or the listed candidates.
# usage: zsh_completion_test.zsh DIRECTORY: the directory of _oru
emulate -R zsh
setopt err_return
zmodload zsh/zpty

typeset directory=${1:A} scratch=$(mktemp -d)
trap 'rm -rf $scratch' EXIT
mkdir $scratch/records
touch $scratch/one.json $scratch/oru.prom $scratch/notes.txt

# The shell under test prints only the results, between two marks.
zpty shell zsh -f -i
zpty -w shell "PROMPT=; unset zle_bracketed_paste; fpath=($directory \$fpath); cd $scratch
autoload -Uz compinit && compinit -u -D
zstyle ':completion:*' list-grouped false
zstyle ':completion:*' verbose false
setopt no_beep no_list_beep
show_line() { print -r -- \"<line>\$1</line>\"; zle .kill-whole-line }
complete_and_show() { zle complete-word; show_line \$BUFFER }
compadd() {
    if [[ \${@[1,(i)(-|--)]} != *-(O|A|D)\ * ]]; then
        typeset -a found
        builtin compadd -A found \"\$@\"
        shown+=(\$found)
    fi
    builtin compadd \"\$@\"
}
list_candidates() { typeset -ga shown=(); zle list-choices; show_line \"\$shown\" }
zle -N complete_and_show
zle -N list_candidates
bindkey '^T' complete_and_show
bindkey '^L' list_candidates
print -r READY-\$((1 + 1))"
typeset text
zpty -r -m shell text '*READY-2*'

typeset -i failed=0

# press KEY LINE EXPECTED
press() {
    typeset got
    zpty -w -n shell "$2"$1
    zpty -r -m shell got '*<line>*</line>*'
    got=${${got##*<line>}%%</line>*}
    if [[ $got != $3 ]]; then
        print -r -- "$2"$'\n'"  expected: $3"$'\n'"  got: $got"
        failed=1
    fi
}
completes() { press $'\C-t' "$1" "$2" }
lists() { press $'\C-l' "$1" "$2" }

completes 'oru-tlm-tool --st' 'oru-tlm-tool --stream-max-stats '
completes 'oru-tlm-tool --stream-max-stats --id' 'oru-tlm-tool --stream-max-stats --identity-info '
completes 'oru-serverreport-tool --list-o' 'oru-serverreport-tool --list-output '
completes 'oru-serverreport-tool -l --list-a' 'oru-serverreport-tool -l --list-available-resolutions '
completes 'oru-snapshot c' 'oru-snapshot check '
completes 'oru-snapshot --v' 'oru-snapshot --version '
completes 'oru-snapshot check o' 'oru-snapshot check one.json '
completes 'oru-snapshot check rec' 'oru-snapshot check records/'
completes 'oru-snapshot r' 'oru-snapshot record '
completes 'oru-snapshot s' 'oru-snapshot show '
completes 'oru-snapshot show o' 'oru-snapshot show one.json '
completes 'oru-snapshot graph rec' 'oru-snapshot graph records/'
completes 'oru-snapshot metrics -o or' 'oru-snapshot metrics -o oru.prom '
completes 'oru-snapshot metrics -o oru.prom on' 'oru-snapshot metrics -o oru.prom one.json '
completes 'oru-snapshot metrics --output=or' 'oru-snapshot metrics --output=oru.prom '
completes 'oru-snapshot record --r' 'oru-snapshot record --redact'
completes 'oru-snapshot record o' 'oru-snapshot record one.json '
completes 'oru-snapshot diff one.json o' 'oru-snapshot diff one.json one.json '
completes 'oru-snapshot record --redact -o o' 'oru-snapshot record --redact -o one.json '
lists 'oru-tlm-tool --' '--stream-max-stats --system-info --identity-info --help'
lists 'oru-serverreport-tool --' "--list-streams --stream-quotas --list-output --list-channels \
--list-resolutions --list-available-resolutions --list-inputs --help"
lists 'oru-snapshot record --' '--help --redact --output --about --redact-key'
lists 'oru-snapshot diff --' '--help --all --color'
lists 'oru-snapshot show --' '--help --wide --problems --stream --color'
lists 'oru-snapshot show --color=' 'always auto never'
lists 'oru-snapshot graph -' '-h --help'
zpty -d shell
(( failed )) || print "zsh_completion_test: all completions are as expected"
exit $failed

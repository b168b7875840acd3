#!/bin/bash
# Calls the installed completion functions as bash does, and compares their candidates.
# usage: bash_completion_test.sh COMPLETIONS TOOLS: the file under test; the directory of the tools
set -u

completions=$1
tools=$2
failed=0

in_lines() { printf '%s\n' "$@" | sort; }

# completes LINE CANDIDATE...: completing the last word of LINE returns the candidates, in any order.
completes() {
    local line=$1 function expected got
    shift
    expected=$(in_lines "$@")
    read -r -a COMP_WORDS <<<"$line"
    [[ $line == *' ' ]] && COMP_WORDS+=('')
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    function=$(complete -p "${COMP_WORDS[0]}" | sed 's/.* -F \([^ ]*\) .*/\1/')
    "$function" "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    got=$(in_lines ${COMPREPLY[@]+"${COMPREPLY[@]}"})
    if [[ $got != "$expected" ]]; then
        printf '%s\n  expected: %s\n  got: %s\n' "$line" "${expected//$'\n'/ }" "${got//$'\n'/ }"
        failed=1
    fi
}

# shellcheck source=/dev/null
. "$completions" || exit 1

completes 'oru-tlm-tool ' --stream-max-stats --system-info --identity-info --help
completes 'oru-tlm-tool --s' --stream-max-stats --system-info
completes 'oru-tlm-tool --system-info --i' --identity-info
completes 'oru-tlm-tool --x'
completes 'oru-serverreport-tool ' --list-streams --stream-quotas --list-output --list-channels \
    --list-resolutions --list-available-resolutions --list-inputs --help
completes 'oru-serverreport-tool --list-o' --list-output
completes 'oru-snapshot ' check record diff show graph metrics --help --version
completes 'oru-snapshot c' check
completes 'oru-snapshot --help '
completes 'oru-snapshot record --' --output --about --redact --redact-key --help
completes 'oru-snapshot diff --' --all --color --help
completes 'oru-snapshot record --redact --a' --about
completes 'oru-snapshot record --about '
completes 'oru-snapshot show --h' --help
completes 'oru-snapshot show --color ' always auto never
completes 'oru-snapshot show --stream '

# The help and the completion have the same commands and options.
options_of() { "$@" --help | grep -o -E -e '--[a-z-]+' | sort -u; }
mapfile -t commands < <("$tools/oru-snapshot" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]\+\).*/\1/p')
mapfile -t options < <(options_of "$tools/oru-snapshot")
completes 'oru-snapshot ' "${commands[@]}" "${options[@]}"
for command in "${commands[@]}"; do
    mapfile -t options < <(options_of "$tools/oru-snapshot" "$command")
    completes "oru-snapshot $command -" "${options[@]}"
done
for tool in oru-tlm-tool oru-serverreport-tool; do
    mapfile -t options < <(options_of "$tools/$tool")
    completes "$tool -" "${options[@]}"
done

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
mkdir records
touch one.json two.json notes.txt oru.prom records/three.json
completes 'oru-snapshot check ' one.json two.json records
completes 'oru-snapshot check one.json t' two.json
completes 'oru-snapshot check records/' records/three.json
completes 'oru-snapshot record --redact -o ' one.json two.json records
completes 'oru-snapshot show ' one.json two.json records
completes 'oru-snapshot graph t' two.json
completes 'oru-snapshot metrics ' one.json two.json records
completes 'oru-snapshot metrics -o ' oru.prom records
completes 'oru-snapshot metrics --output ' oru.prom records
completes 'oru-snapshot metrics -o oru.prom o' one.json

((failed)) || echo "bash_completion_test: all completions are as expected"
exit $failed

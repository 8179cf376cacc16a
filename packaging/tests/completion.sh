#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks the bash completions of quarbel and quarbel-gui: sources them, completes a few
# command lines and compares COMPREPLY.
#   packaging/tests/completion.sh [QUARBEL]
# QUARBEL is the program to complete for (default: none on PATH, so the built-in list of
# benchmarks serves); with bash-completion installed, the checks run both without and
# with its helpers.
set -o pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
program="${1:-quarbel-not-installed}"
failures=0

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir "$work/cards" "$work/reports"
touch "$work/run.json" "$work/notes.txt" "$work/reports/old.json"
# A program whose list names one more benchmark: the identifiers come from "quarbel list".
printf '#!/bin/sh\nprintf "ID TITLE\\ncpuInteger x\\nnewBenchmark y\\n"\n' >"$work/lister"
chmod +x "$work/lister"

# complete FUNCTION WORD... : completes the last word, which may be empty.
complete_line() {
    local function=$1
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMP_LINE="${COMP_WORDS[*]}"
    COMP_POINT=${#COMP_LINE}
    COMPREPLY=()
    "$function" "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
}

# expect DESCRIPTION "WANTED WORDS" [-x "UNWANTED WORDS"] -- FUNCTION WORD...
expect() {
    local what=$1 wanted=$2 unwanted=""
    shift 2
    if [[ $1 == -x ]]; then
        unwanted=$2
        shift 2
    fi
    shift # --
    complete_line "$@"
    local got=" ${COMPREPLY[*]-} " word ok=1
    for word in $wanted; do [[ $got == *" $word "* ]] || ok=0; done
    for word in $unwanted; do [[ $got != *" $word "* ]] || ok=0; done
    if ((ok)); then
        echo "ok    $what"
    else
        echo "FAIL  $what: got [${COMPREPLY[*]-}], wanted [$wanted] without [$unwanted]"
        failures=$((failures + 1))
    fi
}

run_checks() {
    cd "$work" || exit 1
    expect "commands" "list info devices run card history compare import export" -- _quarbel "$program" ""
    expect "a command's start" "run" -x "list info" -- _quarbel "$program" "ru"
    expect "run's options" "--quick --no-history --metrics --until-stable" -x "--format" -- _quarbel "$program" run --
    expect "benchmark identifiers" "cpuInteger cpuFloating cpuCrypto" -x "memoryStream" -- _quarbel "$program" run cpu
    expect "all thirteen identifiers" "cpuInteger cineTile metalVisual openCLCompute rawMetalDecode ssdRandom ssdRealSpeed" -- _quarbel "$program" run ""
    expect "an identifier is offered once" "cpuFloating" -x "cpuInteger" -- _quarbel "$program" run --quick cpuInteger cpu
    expect "--json takes any file" "run.json notes.txt cards" -- _quarbel "$program" run cpuInteger --json ""
    expect "--json=FILE" "run.json" -- _quarbel "$program" run --json = ""
    expect "--metrics takes a file" "notes.txt" -- _quarbel "$program" run --metrics ""
    expect "--cards takes a directory" "cards reports" -x "run.json" -- _quarbel "$program" run --cards ""
    expect "card takes reports" "run.json reports" -x "notes.txt" -- _quarbel "$program" card ""
    expect "card --out takes a directory" "cards" -x "run.json" -- _quarbel "$program" card run.json --out ""
    expect "compare takes reports" "run.json" -x "notes.txt" -- _quarbel "$program" compare 1 ""
    expect "compare's options" "--fail-on-slower --json" -- _quarbel "$program" compare 1 2 --
    expect "import takes reports" "run.json" -- _quarbel "$program" import ""
    expect "export formats" "csv md html json openmetrics" -- _quarbel "$program" export 1 --format ""
    expect "export format's start" "openmetrics" -x "csv" -- _quarbel "$program" export 1 --format o
    expect "export --out takes a file" "notes.txt" -- _quarbel "$program" export 1 --format csv --out ""
    expect "identifiers from the program's list" "newBenchmark" -x "ssdRandom" -- _quarbel "$work/lister" run ""
    expect "info's options" "--json" -- _quarbel "$program" info --
    expect "gui options" "--run --quick --json --quit-when-done --history" -- _quarbel_gui quarbel-gui --
    expect "gui --run" "all cpuInteger ssdRandom" -- _quarbel_gui quarbel-gui --run ""
    expect "gui --run after a comma" "cpuInteger,memoryStream" -x "cpuInteger,all cpuInteger,cpuInteger" -- _quarbel_gui quarbel-gui --run cpuInteger,m
    expect "gui --json takes a file" "run.json" -- _quarbel_gui quarbel-gui --run all --json ""
    cd - >/dev/null || exit 1
}

# shellcheck source=/dev/null
source "$here/completion/quarbel"
# shellcheck source=/dev/null
source "$here/completion/quarbel-gui"
echo "# plain bash"
run_checks
if [[ -r /usr/share/bash-completion/bash_completion ]]; then
    echo "# with bash-completion"
    # shellcheck source=/dev/null
    source /usr/share/bash-completion/bash_completion
    # shellcheck source=/dev/null
    source "$here/completion/quarbel"
    # shellcheck source=/dev/null
    source "$here/completion/quarbel-gui"
    run_checks
fi
if ((failures)); then
    echo "$failures completion check(s) failed"
    exit 1
fi
echo "all completion checks passed"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Each CPU benchmark inside the real quarbel process against the same workload function
# in a bare process (quarbel_cpu_workload_runner: no Qt, no signal handling, no thermal
# polling, a clean register state), alternating, and prints in-process / bare per
# benchmark (the median of the paired rounds; goal >= 0.97). A ratio well below 1 means
# quarbel's own process state is in the score.
# Also prints each side's run-to-run coefficient of variation (CV): the bare side's is what
# the machine varies by itself.
# Usage: bench/in_process_vs_bare.sh [rounds, default 3] [--full] [build dir]
#   Without --full both sides run with every budget divided by ten (quarbel's --quick).
#   IDS="cpuFloating cineTile" measures only those benchmarks.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
ROUNDS="${1:-3}"
SCALE=0.1
QUICK=(--quick)
if [[ "${2:-}" == "--full" ]]; then
  SCALE=1
  QUICK=()
  shift
fi
BUILD="${2:-$ROOT/build/bench}"

build_release_targets "$BUILD" quarbel quarbel_cpu_workload_runner

# QUARBEL=path runs another build of the command line, e.g. an older one, on the in-process side.
QUARBEL="${QUARBEL:-$BUILD/src/cli/quarbel}"
RUNNER="$BUILD/bench/quarbel_cpu_workload_runner"
WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
REPORT="$WORK/report.json"
export XDG_DATA_HOME="$WORK/data" # benchmark runs stay out of the user's run history

in_process() {
  "$QUARBEL" run "$1" "${QUICK[@]}" --no-history --json "$REPORT" >/dev/null
  python3 -c 'import json, sys; print(json.load(open(sys.argv[1]))["results"][0]["score"])' "$REPORT"
}
bare() { "$RUNNER" "$1" "$SCALE" | sed -n 's/.*score=\([0-9.]*\).*/\1/p'; }

echo "$(nproc) CPUs; budget scale $SCALE; $ROUNDS alternating rounds; load average $(cut -d' ' -f1-3 /proc/loadavg)"
cv() { awk '{ s += $1; q += $1 * $1; n++ } END { m = s / n; printf "%.2f", (n > 1 ? 100 * sqrt((q - n * m * m) / (n - 1)) / m : 0) }'; }
printf '%-14s %14s %14s %8s %9s %9s   %s\n' benchmark "in quarbel" bare ratio "CV ours %" "CV bare %" "ratio per round"
for id in ${IDS:-cpuInteger cpuFloating cpuCrypto memoryStream cineTile rawCPUDecode}; do
  ratios=() ours=() theirs=()
  for ((round = 0; round < ROUNDS; ++round)); do
    # Alternate which side goes first, so that neither always meets a warmer machine.
    if ((round % 2 == 0)); then
      a="$(in_process "$id")"
      b="$(bare "$id")"
    else
      b="$(bare "$id")"
      a="$(in_process "$id")"
    fi
    ours+=("$a") theirs+=("$b")
    ratios+=("$(awk -v a="$a" -v b="$b" 'BEGIN { printf "%.3f", a / b }')")
  done
  printf '%-14s %14.1f %14.1f %8.3f %9s %9s   %s\n' "$id" \
    "$(printf '%s\n' "${ours[@]}" | median)" "$(printf '%s\n' "${theirs[@]}" | median)" \
    "$(printf '%s\n' "${ratios[@]}" | median)" "$(printf '%s\n' "${ours[@]}" | cv)" \
    "$(printf '%s\n' "${theirs[@]}" | cv)" "${ratios[*]}"
done

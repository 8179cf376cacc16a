#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the desktop window costs the measurement, in the real programs under Xvfb:
#   1. launch to first painted main window of quarbel-gui (median of 10)       (target < 300 ms)
#   2. cpuInteger and cineTile scores with the window open against the command
#      line's, alternating, median of the per-round ratios                      (target >= 0.98)
#   3. CPU time of quarbel-gui's main thread while cpuInteger runs, from
#      /proc/PID/task/PID/stat over 10 s of the benchmark                       (target <= 2 % of a core)
# Usage: bench/gui_vs_cli.sh [rounds, default 3] [build dir, default build/dev]
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
ROUNDS="${1:-3}"
BUILD="${2:-$ROOT/build/dev}"
build_programs "$BUILD" quarbel quarbel-gui

use_private_folders
start_display 190
score() { python3 -c 'import json, sys; print(json.load(open(sys.argv[1]))["results"][0]["score"])' "$1"; }

echo "$(nproc) CPUs; $ROUNDS rounds; load average $(cut -d' ' -f1-3 /proc/loadavg)"

startups=()
for _ in $(seq 10); do
  start="$(date +%s.%N)"
  painted="$(QUARBEL_FIRST_PAINT_TRACE=quit "$GUI" 2>&1 >/dev/null | sed -n 's/^first-paint //p')"
  startups+=("$(awk -v a="$start" -v b="$painted" 'BEGIN { printf "%.1f", (b - a) * 1000 }')")
done
echo "launch to first paint: median $(printf '%s\n' "${startups[@]}" | median) ms (${startups[*]})"

CLK_TCK="$(getconf CLK_TCK)"
thread_ticks() { awk '{ print $14 + $15 }' "/proc/$1/task/$1/stat"; }
main_thread_load=()
# gui_run <id>: the benchmark in the window; samples the main thread during cpuInteger.
gui_run() {
  "$GUI" --run "$1" --json "$PRIVATE/gui.json" --quit-when-done >/dev/null 2>&1 &
  local gui=$!
  if [[ "$1" == cpuInteger ]]; then
    sleep 3 # start-up and warm-up behind us
    local t1 c1 t2 c2
    t1="$(date +%s.%N)" c1="$(thread_ticks "$gui")"
    sleep 10
    t2="$(date +%s.%N)" c2="$(thread_ticks "$gui")"
    main_thread_load+=("$(awk -v c="$((c2 - c1))" -v hz="$CLK_TCK" -v a="$t1" -v b="$t2" 'BEGIN { printf "%.2f", 100 * c / hz / (b - a) }')")
  fi
  wait "$gui"
}
cli_run() { "$CLI" run "$1" --json "$PRIVATE/cli.json" >/dev/null; }
for id in cpuInteger cineTile; do
  ratios=()
  for ((round = 0; round < ROUNDS; ++round)); do
    # Alternate which side goes first, so that neither always meets a warmer machine.
    if ((round % 2 == 0)); then
      cli_run "$id"
      gui_run "$id"
    else
      gui_run "$id"
      cli_run "$id"
    fi
    ratios+=("$(awk -v a="$(score "$PRIVATE/gui.json")" -v b="$(score "$PRIVATE/cli.json")" 'BEGIN { printf "%.3f", a / b }')")
  done
  echo "$id window / command line: median $(printf '%s\n' "${ratios[@]}" | median) (${ratios[*]})"
done
echo "main thread of quarbel-gui during cpuInteger: median $(printf '%s\n' "${main_thread_load[@]}" | median) % of a core (${main_thread_load[*]}; clock tick $((1000 / CLK_TCK)) ms)"

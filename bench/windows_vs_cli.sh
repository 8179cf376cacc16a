#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the benchmark windows cost the measurement, in the real programs under Xvfb:
#   1. cineTile and rawCPUDecode scores with their animation window open in quarbel-gui
#      against the command line's, alternating, median of the per-round ratios   (target >= 0.98)
#   2. metalVisual: the scene window's average FPS at 960 x 540 (6 draws per frame) next
#      to the command line's offscreen FPS at 1600 x 900 (1 draw per frame), per round
# Usage: bench/windows_vs_cli.sh [rounds, default 3] [build dir, default build/dev] [benchmarks...]
#   benchmarks: any of cineTile rawCPUDecode metalVisual (default all three). Memory-bound
#   rawCPUDecode varies by several percent from run to run here, so it wants many rounds.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
ROUNDS="${1:-3}"
BUILD="${2:-$ROOT/build/dev}"
WANTED=("${@:3}")
((${#WANTED[@]})) || WANTED=(cineTile rawCPUDecode metalVisual)
wanted() { [[ " ${WANTED[*]} " == *" $1 "* ]]; }
build_programs "$BUILD" quarbel quarbel-gui

use_private_folders
start_display 240
field() { python3 -c 'import json, sys; r = json.load(open(sys.argv[1]))["results"][0]; print(eval(sys.argv[2]))' "$1" "$2"; }

echo "$(nproc) CPUs; $ROUNDS rounds; load average $(cut -d' ' -f1-3 /proc/loadavg)"
gui_run() { "$GUI" --run "$1" --json "$PRIVATE/gui.json" --quit-when-done >/dev/null 2>&1; }
cli_run() { "$CLI" run "$1" --json "$PRIVATE/cli.json" >/dev/null; }
# Alternate which side goes first, so that neither always meets a warmer machine.
both() {
  if (($2 % 2 == 0)); then
    cli_run "$1"
    gui_run "$1"
  else
    gui_run "$1"
    cli_run "$1"
  fi
}

for id in cineTile rawCPUDecode; do
  wanted "$id" || continue
  ratios=()
  for ((round = 0; round < ROUNDS; ++round)); do
    both "$id" "$round"
    ratios+=("$(awk -v a="$(field "$PRIVATE/gui.json" 'r["score"]')" -v b="$(field "$PRIVATE/cli.json" 'r["score"]')" 'BEGIN { printf "%.3f", a / b }')")
  done
  echo "$id window / command line: median $(printf '%s\n' "${ratios[@]}" | median) (${ratios[*]})"
done

wanted metalVisual || exit 0
for ((round = 0; round < ROUNDS; ++round)); do
  both metalVisual "$round"
  echo "metalVisual round $((round + 1)): scene window $(field "$PRIVATE/gui.json" 'r["primary"]["value"]') FPS" \
    "(min/max $(field "$PRIVATE/gui.json" 'r["secondary"]["value"]'); $(field "$PRIVATE/gui.json" 'r["detail"]'))" \
    "| offscreen 1600x900 $(field "$PRIVATE/cli.json" 'r["primary"]["value"]') FPS"
done

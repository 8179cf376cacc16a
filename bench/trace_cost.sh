#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What recording the sensor trace costs a benchmark, in the real quarbel: each benchmark run
# with the trace on and with --no-trace, alternating, round after round, no cooldown; prints
# the medians and the ratio on / off (target >= 0.99).
#   bench/trace_cost.sh [rounds, default 3] [build dir, default build/dev] [benchmarks...]
#   (default benchmarks: cpuInteger memoryStream)
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
ROUNDS="${1:-3}"
BUILD="${2:-$ROOT/build/dev}"
shift $(($# < 2 ? $# : 2))
IDS=("$@")
[[ ${#IDS[@]} -gt 0 ]] || IDS=(cpuInteger memoryStream)
QUARBEL="$BUILD/src/cli/quarbel"
[[ -x "$QUARBEL" ]] || "$ROOT/scripts/dev.sh" build >/dev/null
use_private_folders
for round in $(seq 1 "$ROUNDS"); do
  for id in "${IDS[@]}"; do
    "$QUARBEL" run "$id" --no-history --cooldown 0 --json "$PRIVATE/on-$id-$round.json" >/dev/null
    "$QUARBEL" run "$id" --no-history --cooldown 0 --no-trace --json "$PRIVATE/off-$id-$round.json" >/dev/null
  done
  echo "round $round of $ROUNDS done" >&2
done
python3 - "$PRIVATE" "$ROUNDS" "${IDS[@]}" <<'PY'
import json, statistics, sys
folder, rounds, ids = sys.argv[1], int(sys.argv[2]), sys.argv[3:]
for id in ids:
    score = {k: [json.load(open(f"{folder}/{k}-{id}-{r}.json"))["results"][0]["score"]
                 for r in range(1, rounds + 1)] for k in ("on", "off")}
    on, off = statistics.median(score["on"]), statistics.median(score["off"])
    print(f"{id}: trace on {on:.1f} {score['on']}, off {off:.1f} {score['off']}, on/off {on / off:.3f}")
PY

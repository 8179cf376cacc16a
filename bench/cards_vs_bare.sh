#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What rendering and writing result cards costs the real `quarbel card` process: the same
# command on a report with a global and a single card against a bare one on the same
# report with nothing to draw (start-up, font registration and JSON reading alike),
# alternating, medians of wall time. The difference over two cards is one card's cost
# (budget: under 150 ms a card).
# Usage: bench/cards_vs_bare.sh [rounds, default 20] [build dir, default build/dev]
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
ROUNDS="${1:-20}"
BUILD="${2:-$ROOT/build/dev}"
cmake --build "$BUILD" -j2 --target quarbel >/dev/null
CLI="$BUILD/src/cli/quarbel"

PRIVATE="$(mktemp -d)"
trap 'rm -rf "$PRIVATE"' EXIT
"$CLI" run cpuInteger --quick --no-history --json "$PRIVATE/report.json" >/dev/null
python3 - "$PRIVATE/report.json" "$PRIVATE/bare.json" <<'PY'
import json, sys
report = json.load(open(sys.argv[1]))
report["results"], report["summary"] = [], None
json.dump(report, open(sys.argv[2], "w"))
PY

milliseconds() {
  local start end
  start=$(date +%s%N)
  "$@" >/dev/null
  end=$(date +%s%N)
  echo $(((end - start) / 1000000))
}

echo "$(nproc) CPUs; $ROUNDS rounds; load average $(cut -d' ' -f1-3 /proc/loadavg)"
: >"$PRIVATE/cards.txt"
: >"$PRIVATE/bare.txt"
for ((round = 0; round < ROUNDS; ++round)); do
  rm -rf "$PRIVATE/out"
  milliseconds "$CLI" card "$PRIVATE/report.json" --out "$PRIVATE/out" >>"$PRIVATE/cards.txt"
  milliseconds "$CLI" card "$PRIVATE/bare.json" --out "$PRIVATE/out" >>"$PRIVATE/bare.txt"
done
cards=$(median <"$PRIVATE/cards.txt")
bare=$(median <"$PRIVATE/bare.txt")
awk -v c="$cards" -v b="$bare" 'BEGIN {
  printf "quarbel card, 2 cards: %d ms; bare (no card): %d ms; ratio %.2f\n", c, b, c / b
  printf "one card rendered and written: %.0f ms (budget 150 ms)\n", (c - b) / 2
}'

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The history at scale, in the real programs: a private history of N runs (default 10,000),
# each a copy of one real quick-suite report with its own start time and scores within 3 %, then
#   - `quarbel history` once cold (every report read, the index written) and warm (target < 300 ms)
#   - `quarbel compare 1 2`                                                       (target < 100 ms)
#   - `quarbel compare 1 … 50`                                                    (target < 1 s)
#   - `quarbel export 1 … 50 --format html`: time and size                        (targets < 1 s, < 2 MB)
#   - quarbel-gui --history under Xvfb: launch to the Run History window's first paint, beside
#     launch to the main window's                                                 (target < 500 ms)
# Usage: bench/history_scale.sh [runs, default 10000] [build dir, default build/dev]
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
RUNS="${1:-10000}"
BUILD="${2:-$ROOT/build/dev}"
build_programs "$BUILD" quarbel quarbel-gui

use_private_folders
start_display 240
echo "$(nproc) CPUs; $RUNS runs; load average $(cut -d' ' -f1-3 /proc/loadavg)"

"$CLI" run --all --quick --no-history --json "$PRIVATE/seed.json" >/dev/null
python3 - "$PRIVATE/seed.json" "$XDG_DATA_HOME/quarbel/runs" "$RUNS" <<'EOF'
import copy, datetime, json, os, random, sys
seed, folder, runs = json.load(open(sys.argv[1])), sys.argv[2], int(sys.argv[3])
os.makedirs(folder, exist_ok=True)
random.seed(1)
start = datetime.datetime(2025, 1, 1, tzinfo=datetime.timezone.utc)
for i in range(runs):
    report = copy.deepcopy(seed)
    began = start + datetime.timedelta(hours=i)
    report["startedAt"] = began.strftime("%Y-%m-%dT%H:%M:%SZ")
    report["finishedAt"] = (began + datetime.timedelta(seconds=40)).strftime("%Y-%m-%dT%H:%M:%SZ")
    for result in report["results"]:
        factor = random.uniform(0.97, 1.03)
        result["score"] = result["score"] * factor
        result["sliceRates"] = [r * factor for r in result.get("sliceRates", [])]
    with open(os.path.join(folder, began.strftime("%Y-%m-%d-%H%M%SZ") + ".json"), "w") as out:
        json.dump(report, out, indent=2)
EOF
echo "history: $(du -sh "$XDG_DATA_HOME/quarbel/runs" | cut -f1) in $RUNS reports"

# Milliseconds of one run of the command, the best of $1 (the machine is shared: the best is
# the program's own cost).
best_ms() {
  local times=() n="$1"
  shift
  for _ in $(seq "$n"); do
    local a b
    a="$(date +%s%N)"
    "$@" >/dev/null
    b="$(date +%s%N)"
    times+=("$(((b - a) / 1000000))")
  done
  printf '%s\n' "${times[@]}" | sort -n | head -1
}
fifty=($(seq 50))
echo "history, cold (every report read, index written): $(best_ms 1 "$CLI" history) ms"
echo "history, warm: $(best_ms 10 "$CLI" history) ms"
echo "compare 1 2: $(best_ms 10 "$CLI" compare 1 2) ms"
echo "compare 1 ... 50: $(best_ms 5 "$CLI" compare "${fifty[@]}") ms"
echo "export 1 ... 50 --format html: $(best_ms 5 "$CLI" export "${fifty[@]}" --format html --out "$PRIVATE/50.html") ms," \
  "$(($(stat -c %s "$PRIVATE/50.html") / 1024)) KB"

# The window: launch to the first paint of the main window and of the Run History.
mains=() histories=()
for _ in $(seq 5); do
  start="$(date +%s.%N)"
  trace="$(QUARBEL_FIRST_PAINT_TRACE=quit "$GUI" --history 2>&1 >/dev/null)"
  main="$(sed -n 's/^first-paint //p' <<<"$trace")"
  history="$(sed -n 's/^history-paint //p' <<<"$trace")"
  mains+=("$(awk -v a="$start" -v b="$main" 'BEGIN { printf "%.0f", (b - a) * 1000 }')")
  histories+=("$(awk -v a="$start" -v b="$history" 'BEGIN { printf "%.0f", (b - a) * 1000 }')")
done
alone=()
for _ in $(seq 5); do
  start="$(date +%s.%N)"
  main="$(QUARBEL_FIRST_PAINT_TRACE=quit "$GUI" 2>&1 >/dev/null | sed -n 's/^first-paint //p')"
  alone+=("$(awk -v a="$start" -v b="$main" 'BEGIN { printf "%.0f", (b - a) * 1000 }')")
done
echo "quarbel-gui alone: main window painted after $(printf '%s\n' "${alone[@]}" | median) ms"
echo "quarbel-gui --history: main window painted after $(printf '%s\n' "${mains[@]}" | median) ms," \
  "Run History after $(printf '%s\n' "${histories[@]}" | median) ms (medians of ${histories[*]})"

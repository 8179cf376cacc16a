#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Intervals from this machine, checked both ways with the real quarbel in a private history:
#   TRAIN quiet runs teach the run-to-run floors (five are enough), then
#   (a) A/A: AA further quiet runs, every pair compared: the share of benchmark comparisons
#       judged "within noise" (goal >= 95 % of >= 100), and
#   (b) power: LOADED runs slowed by 15 % (see SLOWDOWN below), each compared with every
#       quiet A/A run: the share judged "slower" (goal >= 90 %).
# Every run is pinned to CPU 0, loaded or not, so that the load competes with every benchmark
# alike (left to the scheduler, a small machine gives the load a core of its own).
# Usage: bench/learned_floor.sh [build dir, default build/dev]
#   IDS="..." the benchmarks (default: the six CPU, render, memory and RAW CPU ones), QUICK=0
#   for full budgets, TRAIN, AA, LOADED for the counts (default 6, 7, 5).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
BUILD="${1:-$ROOT/build/dev}"
QUARBEL="$BUILD/src/cli/quarbel"
[[ -x "$QUARBEL" ]] || "$ROOT/scripts/dev.sh" build >/dev/null
read -r -a IDS <<<"${IDS:-cpuInteger cpuFloating cpuCrypto cineTile memoryStream rawCPUDecode}"
QUICK_FLAG=(--quick)
[[ "${QUICK:-1}" == 0 ]] && QUICK_FLAG=()
TRAIN="${TRAIN:-6}" AA="${AA:-7}" LOADED="${LOADED:-5}"
command -v stress-ng >/dev/null || { echo "stress-ng is not installed" >&2; exit 1; }
use_private_folders
OUT="$PRIVATE/reports"
mkdir -p "$OUT"

# The slowdown: with a writable cgroup (v1 cpu controller, as root), a CPU quota of 85 % of the
# one CPU the run is pinned to, in 10 ms periods: every benchmark gets exactly 15 % less time,
# and no other process runs to be noticed. Without one, stress-ng taking 15 % of CPU 0, which
# slows benchmarks unevenly (the report says by how much).
QUOTA_GROUP=/sys/fs/cgroup/cpu/quarbel-learned-floor
SLOWDOWN="${SLOWDOWN:-quota}"
if [[ "$SLOWDOWN" == quota ]] && mkdir -p "$QUOTA_GROUP" 2>/dev/null && echo 10000 >"$QUOTA_GROUP/cpu.cfs_period_us" &&
  echo 8500 >"$QUOTA_GROUP/cpu.cfs_quota_us"; then
  trap 'rmdir "$QUOTA_GROUP" 2>/dev/null; rm -rf "$PRIVATE"' EXIT
else
  SLOWDOWN=stress-ng
fi
echo "slowdown: $SLOWDOWN" >&2

run() { # run NAME [load]
  local stress="" group=()
  if [[ "${2:-}" == load && "$SLOWDOWN" == quota ]]; then
    group=(sh -c 'echo $$ >'"$QUOTA_GROUP"'/cgroup.procs && exec "$@"' quota)
  elif [[ "${2:-}" == load ]]; then
    taskset -c 0 stress-ng --cpu 1 --cpu-load 15 --timeout 0 >/dev/null 2>&1 &
    stress=$!
    sleep 1
  fi
  taskset -c 0 "${group[@]}" "$QUARBEL" run "${IDS[@]}" "${QUICK_FLAG[@]}" --json "$OUT/$1.json" >"$OUT/$1.txt" 2>&1 || true
  [[ -n "$stress" ]] && { kill "$stress"; wait "$stress" 2>/dev/null || true; }
  echo "$1 done: $(grep -o 'Run-to-run floors:.*' "$OUT/$1.txt" | cut -c1-110)" >&2
}

for i in $(seq 1 "$TRAIN"); do run "train$i"; done
for i in $(seq 1 "$AA"); do run "quiet$i"; done
for i in $(seq 1 "$LOADED"); do run "loaded$i" load; done

compare() { "$QUARBEL" compare "$OUT/$1.json" "$OUT/$2.json" --json >"$OUT/compare-$3-$1-$2.json" || true; }
for i in $(seq 1 "$AA"); do
  for j in $(seq $((i + 1)) "$AA"); do compare "quiet$i" "quiet$j" aa; done
  for j in $(seq 1 "$LOADED"); do compare "quiet$i" "loaded$j" power; done
done

python3 - "$OUT" <<'PY'
import glob, json, os, sys, collections, statistics
out = sys.argv[1]
tally = {k: collections.Counter() for k in ("aa", "power")}
per = collections.defaultdict(collections.Counter)
for path in glob.glob(os.path.join(out, "compare-*.json")):
    kind = os.path.basename(path).split("-")[1]
    for row in json.load(open(path))["results"]:
        verdict = "could not judge" if row.get("notJudged") else row["verdict"]
        tally[kind][verdict] += 1
        per[(kind, row["title"])][verdict] += 1
floors = {}
for path in glob.glob(os.path.join(out, "quiet*.json")):
    for r in json.load(open(path))["results"]:
        f = r.get("noiseFloor") or {}
        floors.setdefault(r["title"], []).append((f.get("percent"), f.get("fromRuns")))
aa, power = tally["aa"], tally["power"]
n = sum(aa.values())
print(f"A/A: {aa['within noise']} of {n} comparisons within noise ({100 * aa['within noise'] / max(n, 1):.1f} %, goal >= 95 %); {dict(aa)}")
n = sum(power.values())
print(f"Power (15 % less CPU time): {power['slower']} of {n} judged slower ({100 * power['slower'] / max(n, 1):.1f} %, goal >= 90 %); {dict(power)}")
for (kind, title), counts in sorted(per.items()):
    print(f"  {kind:5} {title:18} {dict(counts)}")
scores = collections.defaultdict(lambda: collections.defaultdict(list))
for kind in ("quiet", "loaded"):
    for path in glob.glob(os.path.join(out, kind + "*.json")):
        for r in json.load(open(path))["results"]:
            if r.get("score"):
                scores[r["title"]][kind].append(r["score"])
print("the load's real effect (median score loaded / quiet):")
for title, by_kind in sorted(scores.items()):
    if by_kind["quiet"] and by_kind["loaded"]:
        ratio = statistics.median(by_kind["loaded"]) / statistics.median(by_kind["quiet"])
        print(f"  {title:18} {ratio:.3f} ({100 * (ratio - 1):+.1f} %)")
print("floors the A/A runs used (percent, from runs):")
for title, values in sorted(floors.items()):
    print(f"  {title:18} " + ", ".join(f"{p:.2f}/{r}" for p, r in values if p is not None))
PY

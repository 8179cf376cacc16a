#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# How far Quarbel's numbers can be trusted on this machine, measured with the real quarbel:
#   survey N   N runs of an unchanged machine: per benchmark the run-to-run coefficient of
#              variation (CV), the within-run uncertainty the slices show, and the run-to-run
#              noise they cannot see (the floor that quarbel adds to a single pass's interval).
#   trust N    N + 1 runs of an unchanged machine interleaved with N runs under a steady
#              competing load (stress-ng --cpu 1 --cpu-load 20 on CPU 0, taking a fifth of
#              that core):
#              (a) A/A: the fraction of consecutive unchanged pairs that `quarbel compare` calls
#                  "within noise" (goal >= 95 %),
#              (b) power: the fraction of (unchanged, loaded) pairs it calls "slower", for the
#                  CPU benchmarks (goal >= 90 %),
#              (c) the CV of every benchmark over the unchanged runs, and
#              (d) calibration: how often each unchanged run's 95 % interval holds the median of
#                  all of them (goal >= 9 in 10).
# One run is the CPU, render, memory and RAW benchmarks at full budgets plus the GPU and
# storage benchmarks quick. The single-threaded benchmark runs on CPU 0 in every run, loaded
# or not: left to the scheduler, its one thread and the load would each get a core of their
# own on a small machine, and the load would not compete with it at all. Runs stay out of the
# user's history.
# Usage: bench/trust.sh survey|trust [N, default 10] [build dir]
#   QUARBEL=path measures another build of the command line (an older one, say).
#   TRUST_KEEP=folder keeps the reports there (surveys add up), else they go with the script.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
MODE="${1:?usage: bench/trust.sh survey|trust [N] [build dir]}"
N="${2:-10}"
BUILD="${3:-$ROOT/build/bench}"
if [[ -z "${QUARBEL:-}" ]]; then
  build_release_targets "$BUILD" quarbel
  QUARBEL="$BUILD/src/cli/quarbel"
fi
if [[ "$MODE" == trust ]] && ! command -v stress-ng >/dev/null; then
  sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends stress-ng >/dev/null
fi

SINGLE=(cpuInteger)
FULL=(cpuFloating cpuCrypto cineTile memoryStream rawCPUDecode)
QUICK=(metalVisual metalCompute openCLCompute rawMetalDecode ssdSequential ssdRealSpeed ssdRandom)
use_private_folders
OUTDIR="${TRUST_KEEP:-$PRIVATE/runs}"
mkdir -p "$OUTDIR"
export TMPDIR="$PRIVATE/tmp"
mkdir -p "$TMPDIR"

# run NAME [load]: one run of the three sets, reports in $OUTDIR/NAME-single.json, -full.json
# and -quick.json.
run() {
  local stress=""
  if [[ "${2:-}" == load ]]; then
    taskset -c 0 stress-ng --cpu 1 --cpu-load 20 --timeout 0 >/dev/null 2>&1 &
    stress=$!
    sleep 1
  fi
  taskset -c 0 "$QUARBEL" run "${SINGLE[@]}" --no-history --json "$OUTDIR/$1-single.json" >/dev/null 2>&1 || true
  "$QUARBEL" run "${FULL[@]}" --no-history --json "$OUTDIR/$1-full.json" >/dev/null 2>&1 || true
  "$QUARBEL" run "${QUICK[@]}" --quick --no-history --json "$OUTDIR/$1-quick.json" >/dev/null 2>&1 || true
  if [[ -n "$stress" ]]; then
    kill "$stress" 2>/dev/null || true
    wait "$stress" 2>/dev/null || true
  fi
  echo "run $1 done ($(cut -d' ' -f1-3 /proc/loadavg))" >&2
}

# compare A B: quarbel's own verdicts of B against A, as JSON lines per set.
compare() {
  for set in single full quick; do
    "$QUARBEL" compare "$OUTDIR/$1-$set.json" "$OUTDIR/$2-$set.json" --json >"$OUTDIR/compare-$1-$2-$set.json" ||
      true
  done
}

echo "$(nproc) CPUs; $MODE with N=$N; $QUARBEL; load average $(cut -d' ' -f1-3 /proc/loadavg)"
if [[ "$MODE" == survey ]]; then
  # Named by time, so that several surveys into one TRUST_KEEP folder add up.
  for i in $(seq 0 $((N - 1))); do run "quiet$(date +%s%N)"; done
else
  run quiet0
  for i in $(seq 1 "$N"); do
    run "load$i" load
    run "quiet$i"
    compare "quiet$((i - 1))" "quiet$i"
    compare "quiet$((i - 1))" "load$i"
  done
fi

python3 - "$MODE" "$OUTDIR" <<'PY'
import glob, json, math, os, statistics, sys
mode, folder = sys.argv[1], sys.argv[2]
quiet = {}
for path in sorted(glob.glob(os.path.join(folder, "quiet*-*.json"))):
    for r in json.load(open(path))["results"]:
        if r["status"] == "ok":
            quiet.setdefault(r["id"], []).append(r)
print(f"{'benchmark':15} {'runs':>4} {'CV %':>6} {'within %':>9} {'floor %':>8} {'floor80 %':>9} {'ci95 %':>7} {'covers':>7}")
for bid, rs in quiet.items():
    scores = [r["score"] for r in rs]
    logs = [math.log(s) for s in scores]
    n = len(rs)
    if n < 2:
        continue
    cv = statistics.stdev(scores) / statistics.mean(scores) * 100
    within = [((r.get("uncertainty") or {}).get("withinRunRelativeStandardError") or 0.0) for r in rs]
    v, w = statistics.variance(logs), statistics.mean(x * x for x in within)
    floor = math.sqrt(max(0.0, v - w)) * 100
    # An upper 80 % bound of the variance (Wilson-Hilferty's chi-square quantile).
    k = n - 1
    chi = k * (1 - 2 / (9 * k) - 0.8416 * math.sqrt(2 / (9 * k))) ** 3
    floor80 = math.sqrt(max(0.0, v * k / chi - w)) * 100
    median = statistics.median(scores)
    cis = [r.get("ci95Percent") for r in rs]
    covered = sum(1 for s, c in zip(scores, cis) if c is not None and abs(s - median) <= s * c / 100)
    ci = statistics.mean(c for c in cis if c is not None) if any(c is not None for c in cis) else float("nan")
    print(f"{bid:15} {n:4} {cv:6.2f} {math.sqrt(w) * 100:9.2f} {floor:8.2f} {floor80:9.2f} {ci:7.2f} {covered:3}/{n:<3}")
if mode == "trust":
    cpu = {"CPU Single-Core", "CPU Multi-Core", "CPU Workflow"}
    tallies = {"aa": [0, 0], "power": [0, 0]}
    per = {}
    for path in glob.glob(os.path.join(folder, "compare-*.json")):
        kind = "power" if "-load" in os.path.basename(path) else "aa"
        try:
            rows = json.load(open(path))["results"]
        except (ValueError, KeyError):
            continue
        for row in rows:
            if row["verdict"] == "inconclusive":
                per.setdefault((kind, row["title"]), []).append("inconclusive")
                continue
            per.setdefault((kind, row["title"]), []).append(row["verdict"])
            if kind == "aa":
                tallies["aa"][0] += row["verdict"] == "within noise"
                tallies["aa"][1] += 1
            elif row["title"] in cpu:
                tallies["power"][0] += row["verdict"] == "slower"
                tallies["power"][1] += 1
    a, b = tallies["aa"]
    print(f"\nA/A: {a} of {b} comparisons within noise ({100 * a / max(b, 1):.1f} %, goal >= 95 %)")
    a, b = tallies["power"]
    print(f"Power: {a} of {b} CPU comparisons slower under a fifth-of-a-core load ({100 * a / max(b, 1):.1f} %, goal >= 90 %)")
    for (kind, title), verdicts in sorted(per.items()):
        counts = {v: verdicts.count(v) for v in sorted(set(verdicts))}
        print(f"  {kind:5} {title:18} {counts}")
PY

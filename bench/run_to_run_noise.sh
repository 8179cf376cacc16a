#!/usr/bin/env bash
# Run-to-run noise of every benchmark in the real quarbel: the whole suite N times in a
# row, then per benchmark the mean score, its standard deviation and the coefficient of
# variation (CV), and per category the noise band that `quarbel compare` would derive:
# three times the category's largest CV, at least 1 %.
# Usage: bench/run_to_run_noise.sh [runs, default 10] [--full] [build dir]
#   Without --full every budget is divided by ten (--quick): noisier, so the bands it gives
#   are on the safe side for full runs.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
RUNS="${1:-10}"
QUICK=(--quick)
if [[ "${2:-}" == "--full" ]]; then
  QUICK=()
  shift
fi
BUILD="${2:-$ROOT/build/bench}"
if [[ ! -f "$BUILD/build.ninja" ]]; then
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUARBEL_BUILD_TESTS=OFF \
    -DQUARBEL_BUILD_BENCHMARKS=ON >/dev/null
fi
cmake --build "$BUILD" -j "$(nproc)" --target quarbel >/dev/null

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
export XDG_DATA_HOME="$WORK/data" # these runs stay out of the user's run history
echo "$(nproc) CPUs; $RUNS runs of the suite ${QUICK[*]}; load average $(cut -d' ' -f1-3 /proc/loadavg)"
for run in $(seq 1 "$RUNS"); do
  "$BUILD/src/cli/quarbel" run --all "${QUICK[@]}" --no-history --json "$WORK/run-$run.json" >/dev/null || true
  echo "run $run of $RUNS done" >&2
done

python3 - "$WORK"/run-*.json <<'PY'
import json, statistics, sys
scores, categories = {}, {}
for path in sys.argv[1:]:
    for r in json.load(open(path))["results"]:
        categories[r["title"]] = r["category"]
        if r["status"] == "ok":
            scores.setdefault(r["title"], []).append(r["score"])
print(f"{'benchmark':<20} {'runs':>4} {'mean':>12} {'sd':>10} {'CV %':>7}")
worst = {}
for title, category in categories.items():
    values = scores.get(title, [])
    if len(values) < 2:
        print(f"{title:<20} {len(values):>4}   (not enough ok runs)")
        continue
    mean, sd = statistics.mean(values), statistics.stdev(values)
    cv = 100 * sd / mean if mean else 0
    worst[category] = max(worst.get(category, 0), cv)
    print(f"{title:<20} {len(values):>4} {mean:>12.1f} {sd:>10.1f} {cv:>7.2f}")
print()
print(f"{'category':<10} {'largest CV %':>12} {'noise band %':>13}")
for category, cv in worst.items():
    print(f"{category:<10} {cv:>12.2f} {max(1.0, 3 * cv):>13.1f}")
PY

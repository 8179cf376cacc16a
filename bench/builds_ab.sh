#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Two builds of the real quarbel side by side: each benchmark run by build A, then by build B,
# round after round, in one session on this machine; prints each build's median score and the
# ratio B / A. Run it with the same build twice for an A/A check of the noise.
#   bench/builds_ab.sh QUARBEL_A QUARBEL_B [rounds, default 3] BENCHMARK...
# Example: a commit against its parent, the GPU loops at their full budgets:
#   git worktree add /tmp/parent HEAD~1 && cmake -S /tmp/parent -B /tmp/parent/build -G Ninja \
#     -DCMAKE_BUILD_TYPE=RelWithDebInfo && cmake --build /tmp/parent/build --target quarbel
#   bench/builds_ab.sh /tmp/parent/build/src/cli/quarbel build/dev/src/cli/quarbel 3 metalCompute
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
[[ $# -ge 3 ]] || { sed -n 2,8p "$0" >&2; exit 2; }
A="$1" B="$2"
shift 2
ROUNDS=3
if [[ "$1" =~ ^[0-9]+$ ]]; then ROUNDS="$1"; shift; fi
use_private_folders
for round in $(seq 1 "$ROUNDS"); do
  for build in A B; do
    binary="$A"; [[ $build == B ]] && binary="$B"
    for id in "$@"; do
      "$binary" run "$id" --no-history --json "$PRIVATE/$build-$id-$round.json" >/dev/null
    done
  done
  echo "round $round of $ROUNDS done" >&2
done
python3 - "$PRIVATE" "$ROUNDS" "$@" <<'PY'
import json, statistics, sys
folder, rounds, ids = sys.argv[1], int(sys.argv[2]), sys.argv[3:]
for id in ids:
    scores = {b: [json.load(open(f"{folder}/{b}-{id}-{r}.json"))["results"][0]["score"]
                  for r in range(1, rounds + 1)] for b in "AB"}
    a, b = statistics.median(scores["A"]), statistics.median(scores["B"])
    print(f"{id}: A {a:.1f} {scores['A']}, B {b:.1f} {scores['B']}, B/A {b / a:.3f}")
PY

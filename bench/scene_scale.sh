#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# GPU Visual Tour in the real quarbel-gui at display scale 1 and 2 (QT_SCALE_FACTOR), rounds
# alternating, under a private Xvfb: the scene must measure the same work at both, so the
# ratio of the medians should be 1 within the run-to-run noise.
#   bench/scene_scale.sh [rounds, default 3] [build dir, default build/dev]
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
ROUNDS="${1:-3}"
BUILD="${2:-$ROOT/build/dev}"
GUI="$BUILD/src/app/quarbel-gui"
[[ -x "$GUI" ]] || "$ROOT/scripts/dev.sh" build >/dev/null
WORK="$(mktemp -d)"
export XDG_DATA_HOME="$WORK/data" XDG_CONFIG_HOME="$WORK/config" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
export DISPLAY=":$((200 + RANDOM % 50))"
Xvfb "$DISPLAY" -screen 0 2560x1440x24 -nolisten tcp -noreset >/dev/null 2>&1 &
XVFB=$!
trap 'kill $XVFB 2>/dev/null; rm -rf "$WORK"' EXIT
sleep 1
for round in $(seq 1 "$ROUNDS"); do
  for scale in 1 2; do
    QT_SCALE_FACTOR=$scale "$GUI" --run metalVisual --quit-when-done --json "$WORK/s$scale-$round.json" >/dev/null 2>&1
  done
  echo "round $round of $ROUNDS done" >&2
done
python3 - "$WORK" "$ROUNDS" <<'PY'
import json, statistics, sys
work, rounds = sys.argv[1], int(sys.argv[2])
score = {s: [json.load(open(f"{work}/s{s}-{r}.json"))["results"][0]["score"] for r in range(1, rounds + 1)] for s in (1, 2)}
for s in (1, 2):
    print(f"scale {s}: " + ", ".join(f"{x:.1f}" for x in score[s]) + f"  median {statistics.median(score[s]):.1f}")
print(f"scale 2 / scale 1: {statistics.median(score[2]) / statistics.median(score[1]):.3f}")
PY

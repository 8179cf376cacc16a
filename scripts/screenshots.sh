#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Screenshots of the real quarbel-gui window under Xvfb, with the real workloads:
#   idle.png        the window at start
#   cpu.png         CPU Multi-Core running on its inline stage
#   storage.png     SSD Sequential running on its inline stage
#   quick.png       CPU Multi-Core mid-way through a quick run
#   accuracy.png    an Accuracy Mode result of Memory Stream
#   skipped-gpu.png GPU benchmarks skipped for want of a driver
#   suite.png       a finished quick suite with its summary
#   scene.png       the GPU Visual Tour's Vulkan window mid-run, over the main window
#   anim-<id>.png   the animation window of cineTile, metalCompute, openCLCompute,
#                   rawCPUDecode and rawMetalDecode mid-run
#   poster.png      the main window's poster while CPU Tile Render runs (its window moved aside)
#   help.png        the help window over the main window
#   laptop*.png, two-windows.png, question.png, waiting.png: on a 1366x768 screen (see there)
#   devices.png     the Devices dialog over the main window
#   history.png     the run history window comparing the quick suite with a later run
#   cards-suite/    the result cards of the quick suite (quarbel card on its report)
#   cards-skipped/  the result cards of a quick run without Vulkan and OpenCL drivers
# Usage: scripts/screenshots.sh [output dir, default build/screenshots]
# Installs Xvfb, xdotool and ImageMagick when missing. Nothing is written outside the
# output dir and a private temporary directory (settings and scratch files).
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
OUT="$(mkdir -p "${1:-$ROOT/build/screenshots}" && cd "${1:-$ROOT/build/screenshots}" && pwd)"

missing=()
for tool in Xvfb:xvfb xdotool:xdotool import:imagemagick; do
  command -v "${tool%%:*}" >/dev/null || missing+=("${tool##*:}")
done
if ((${#missing[@]})); then
  sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
"$ROOT/scripts/dev.sh" build >/dev/null
GUI="$ROOT/build/dev/src/app/quarbel-gui"

PRIVATE="$(mktemp -d)"
export XDG_CONFIG_HOME="$PRIVATE/config" TMPDIR="$PRIVATE/tmp" XDG_RUNTIME_DIR="$PRIVATE/runtime" \
  XDG_DATA_HOME="$PRIVATE/data" QUARBEL_RUN_LOCK_DIR="$PRIVATE/locks"
mkdir -p "$TMPDIR" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
DISPLAY_NUMBER=$((90 + RANDOM % 100))
export DISPLAY=":$DISPLAY_NUMBER"
Xvfb "$DISPLAY" -screen 0 1280x880x24 -nolisten tcp -noreset >/dev/null 2>&1 &
XVFB=$!
GUI_PID=""
cleanup() {
  [[ -n "$GUI_PID" ]] && kill "$GUI_PID" 2>/dev/null && wait "$GUI_PID" 2>/dev/null
  kill "$XVFB" 2>/dev/null || true
  rm -rf "$PRIVATE"
}
trap cleanup EXIT
sleep 1

# start_gui [args...]: starts the program and waits for its window.
start_gui() {
  "$GUI" "$@" >"$PRIVATE/gui.log" 2>&1 &
  GUI_PID=$!
  for _ in $(seq 100); do
    xdotool search --name '^Quarbel$' >/dev/null 2>&1 && return 0
    sleep 0.1
  done
  echo "quarbel-gui did not open its window; it said:" >&2
  cat "$PRIVATE/gui.log" >&2
  return 1
}
# stop_gui: quits the way a user does (SIGTERM stops the run and removes scratch files).
stop_gui() {
  kill -TERM "$GUI_PID" 2>/dev/null || true
  wait "$GUI_PID" 2>/dev/null || true
  GUI_PID=""
}
shot() { import -window root "$OUT/$1"; echo "$OUT/$1"; }
# open_history: Ctrl+H in the main window, again until the history window shows (the main
# window may not be mapped yet when its name first appears; only the mapped one takes focus,
# as Qt keeps an unmapped leader window of the same name).
open_history() {
  local main
  for _ in $(seq 20); do
    main="$(xdotool search --onlyvisible --name '^Quarbel$' | head -1)"
    [[ -n "$main" ]] && xdotool windowfocus "$main" && sleep 0.2 && xdotool key ctrl+h
    sleep 0.5
    xdotool search --onlyvisible --name '^Quarbel - Run History$' >/dev/null 2>&1 && return 0
  done
  echo "the run history window did not open" >&2
  return 1
}

# The benchmark windows, mid-run, above the main window.
start_gui --run metalVisual
sleep 6
shot scene.png
stop_gui
for id in cineTile metalCompute openCLCompute rawCPUDecode rawMetalDecode; do
  start_gui --run "$id"
  sleep 4
  shot "anim-$id.png"
  if [[ "$id" == cineTile ]]; then
    xdotool search --name '^Quarbel - CPU Tile Render$' windowmove 900 640
    sleep 1
    shot poster.png
  fi
  stop_gui
done

start_gui
sleep 1.5
shot idle.png
# Without a window manager nothing has the focus until it is given.
xdotool windowfocus --sync "$(xdotool search --name '^Quarbel$' | head -1)" key F1
sleep 1
shot help.png
stop_gui

# The Devices dialog, from the Run menu's last item.
start_gui
sleep 1.5
xdotool windowfocus --sync "$(xdotool search --name '^Quarbel$' | head -1)" key alt+r
sleep 0.5
xdotool key Up Return
sleep 1.5
shot devices.png
stop_gui

start_gui --run cpuFloating
sleep 6
shot cpu.png
stop_gui

start_gui --run ssdSequential
sleep 3
shot storage.png
stop_gui

# A quick run mid-way: its shortened target, the Quick mark and switch.
start_gui --run cpuFloating --quick
sleep 1.3
shot quick.png
stop_gui

# An Accuracy Mode result: three passes' scores, their spread and the interval.
start_gui --run memoryStream --accuracy --quick
sleep 5.5
shot accuracy.png
stop_gui

# GPU benchmarks skipped because the Vulkan and OpenCL loaders find no driver.
VK_ICD_FILENAMES=/nonexistent.json OCL_ICD_VENDORS=/nonexistent start_gui --run metalCompute,openCLCompute --quick
sleep 3
shot skipped-gpu.png
stop_gui

start_gui --run all --quick --json "$PRIVATE/report.json"
for _ in $(seq 600); do
  [[ -s "$PRIVATE/report.json" ]] && break
  sleep 0.5
done
sleep 1.5
shot suite.png
stop_gui

# A second, shorter run, then the history comparing the suite with it.
"$GUI" --run cpuInteger,cpuCrypto,memoryStream,cineTile --quick --quit-when-done >/dev/null 2>&1
start_gui
open_history
sleep 1
shot history.png
stop_gui

leftovers="$(find "$TMPDIR" -mindepth 1 -maxdepth 1 | wc -l)"
[[ "$leftovers" -eq 0 ]] || echo "warning: $leftovers entries left in the scratch directory" >&2

# The result cards need no display: the command line draws them offscreen. Once from the
# quick suite's report, once from a run whose GPU benchmarks are skipped because the
# Vulkan and OpenCL loaders find no driver.
CLI="$ROOT/build/dev/src/cli/quarbel"
rm -rf "$OUT/cards-suite" "$OUT/cards-skipped"
"$CLI" card "$PRIVATE/report.json" --out "$OUT/cards-suite"
VK_ICD_FILENAMES=/nonexistent.json OCL_ICD_VENDORS=/nonexistent "$CLI" run cpuInteger memoryStream metalVisual \
  metalCompute openCLCompute rawMetalDecode --quick --cards "$OUT/cards-skipped" | grep '^Result card:'

# ---------------------------------------------------------------------------------------
# Run History and long values:
#   history-compare.png  two quick runs of the same benchmarks, the newer compared with the older
#   history-results.png  the newer run opened read-only (Return on the selected run)
#   cards-long/          the cards of a report whose scores have nine digits and whose
#                        measurements are long, drawn by quarbel card
for _ in 1 2; do
  "$GUI" --run cpuInteger,memoryStream,ssdRandom --quick --quit-when-done >/dev/null 2>&1
done
start_gui
open_history
sleep 1
shot history-compare.png
xdotool windowfocus --sync "$(xdotool search --onlyvisible --name '^Quarbel - Run History$' | head -1)" key Return
sleep 1
shot history-results.png
stop_gui
NEWEST="$(ls "$XDG_DATA_HOME/quarbel/runs/"*.json | sort | tail -1)"
rm -rf "$OUT/cards-long"
if command -v python3 >/dev/null; then
  python3 - "$NEWEST" "$PRIVATE/long.json" <<'PY'
import json, sys
report = json.load(open(sys.argv[1]))
for result in report["results"]:
    result.update(score=123456789.0, scoreText="123456789", duration=123456.78,
                  primary={"label": "Sequential Throughput", "value": "123456789.12", "unit": "GB/s"},
                  secondary={"label": "Min/Max", "value": "123456.7 / 234567.8", "unit": "FPS"})
report["summary"]["score"] = report["globalScore"] = 123456789.0
json.dump(report, open(sys.argv[2], "w"))
PY
  "$CLI" card "$PRIVATE/long.json" --out "$OUT/cards-long"
else
  echo "python3 is missing: no cards-long/" >&2
fi

# ---- Small and scaled screens ---------------------------------------------------------
#   laptop.png        the main window at its default size on a 1366 x 768 screen: the menu
#                     bar and the footer are on screen
#   scene-scaled.png  the GPU Visual Tour's window mid-run at QT_SCALE_FACTOR=2, over the
#                     main window (the scene is measured at 960 x 540 pixels all the same)
# with_screen WIDTHxHEIGHT: a fresh Xvfb of that size, on the same display, for what follows.
with_screen() {
  kill "$XVFB" 2>/dev/null || true
  wait "$XVFB" 2>/dev/null || true
  Xvfb "$DISPLAY" -screen 0 "$1x24" -nolisten tcp -noreset >/dev/null 2>&1 &
  XVFB=$!
  sleep 1
}
with_screen 1366x768
rm -rf "$XDG_CONFIG_HOME" # no saved frame: the default size, fitted to the screen
start_gui
sleep 1.5
shot laptop.png
stop_gui

# On the same screen:
#   laptop-stopped.png  a quick suite stopped (Ctrl+.) after its first benchmark: earlier results stay
#   two-windows.png     a second window beside the first, which names the first's run in amber
#   question.png        Ctrl+R while the command line runs SSD Random: wait, run anyway or cancel
#   waiting.png         after Wait for It
start_gui --run cpuInteger --quick
sleep 5
xdotool windowfocus --sync "$(xdotool search --onlyvisible --name '^Quarbel$' | head -1)" key ctrl+shift+r
sleep 2.5
xdotool key ctrl+period
sleep 1.5
shot laptop-stopped.png
stop_gui
"$GUI" --run ssdRandom >"$PRIVATE/first.log" 2>&1 &
FIRST=$!
sleep 3
start_gui --run cpuInteger
sleep 5
shot two-windows.png
stop_gui
kill -TERM "$FIRST" && wait "$FIRST" 2>/dev/null || true
"$ROOT/build/dev/src/cli/quarbel" run ssdRandom --no-history >/dev/null 2>&1 &
FIRST=$!
sleep 1
start_gui
sleep 2
xdotool windowfocus --sync "$(xdotool search --onlyvisible --name '^Quarbel$' | head -1)" key ctrl+r
sleep 1.5
shot question.png
xdotool key Return
sleep 1.5
shot waiting.png
stop_gui
kill -INT "$FIRST" && wait "$FIRST" 2>/dev/null || true
with_screen 2600x1800
rm -rf "$XDG_CONFIG_HOME"
QT_SCALE_FACTOR=2 start_gui --run metalVisual
sleep 6
shot scene-scaled.png
stop_gui

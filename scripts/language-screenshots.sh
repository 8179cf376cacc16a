#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The window in German and pseudo-translated (every translated text 40 % longer, in brackets;
# a plain English text is one left untranslated), at 1200x820 and 1366x768:
#   <language>-<size>-run.png      after a quick run of two benchmarks, summary and result shown
#   <language>-<size>-summary.png  the same scrolled to the run summary and its buttons
#   <language>-<size>-history.png  the run history placing it beside the H100 workstation
# Usage: scripts/language-screenshots.sh [output dir, default build/screenshots/languages]
# Needs what scripts/screenshots.sh needs, and python3-pyatspi with at-spi2-core to press the
# summary's Compare with… button the way a screen reader does.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
GUI="$ROOT/build/dev/src/app/quarbel-gui"

# Inside a private session bus: the accessibility bus, the window, two screenshots.
if [[ "${1:-}" == --inside-session ]]; then
  language="$2" size="$3" OUT="$4" PRIVATE="$5"
  /usr/libexec/at-spi-bus-launcher --launch-immediately >/dev/null 2>&1 &
  sleep 1
  if [[ "$language" == de ]]; then
    export LANG=de_DE.UTF-8 LANGUAGE=de
  else
    export QUARBEL_PSEUDO_TRANSLATION=1
  fi
  QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$GUI" --run cpuInteger,memoryStream --quick --json "$PRIVATE/report.json" \
    >"$PRIVATE/gui.log" 2>&1 &
  gui=$!
  for _ in $(seq 300); do
    [[ -s "$PRIVATE/report.json" ]] && break
    sleep 0.3
  done
  sleep 2
  import -window root "$OUT/$language-$size-run.png"
  # The summary sits under the result: the wheel over the centre column brings it up.
  xdotool mousemove 600 500
  for _ in $(seq 12); do xdotool click 5; done
  sleep 0.5
  import -window root "$OUT/$language-$size-summary.png"
  /usr/bin/python3 "$ROOT/scripts/press_compare.py" 3 # h100-xeon16 || echo "could not open the comparison" >&2
  sleep 2
  import -window root "$OUT/$language-$size-history.png"
  kill -TERM "$gui"
  wait "$gui" 2>/dev/null || true
  exit 0
fi

OUT="$(mkdir -p "${1:-$ROOT/build/screenshots/languages}" && cd "${1:-$ROOT/build/screenshots/languages}" && pwd)"
"$ROOT/scripts/dev.sh" build >/dev/null
PRIVATE="$(mktemp -d)"
XVFB=""
cleanup() {
  [[ -n "$XVFB" ]] && kill "$XVFB" 2>/dev/null
  rm -rf "$PRIVATE"
}
trap cleanup EXIT

for size in 1200x820 1366x768; do
  for language in de pseudo; do
    export XDG_CONFIG_HOME="$PRIVATE/config-$language-$size" XDG_DATA_HOME="$PRIVATE/data-$language-$size" \
      TMPDIR="$PRIVATE/tmp" XDG_RUNTIME_DIR="$PRIVATE/runtime" QUARBEL_RUN_LOCK_DIR="$PRIVATE/locks"
    mkdir -p "$TMPDIR" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
    export DISPLAY=":$((90 + RANDOM % 100))"
    Xvfb "$DISPLAY" -screen 0 "${size}x24" -nolisten tcp -noreset >/dev/null 2>&1 &
    XVFB=$!
    sleep 1
    rm -f "$PRIVATE/report.json"
    dbus-run-session -- "$0" --inside-session "$language" "$size" "$OUT" "$PRIVATE"
    kill "$XVFB" 2>/dev/null || true
    wait "$XVFB" 2>/dev/null || true
    XVFB=""
    echo "$OUT/$language-$size-{run,summary,history}.png"
  done
done

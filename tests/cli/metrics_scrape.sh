#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The --metrics file of a real run, checked by promtool and scraped through the real
# prometheus-node-exporter's textfile collector on 127.0.0.1, as a fleet would read it.
# Usage: metrics_scrape.sh QUARBEL_BINARY. Exits 77 (skipped) without promtool or the exporter.
set -euo pipefail
QUARBEL="$1"
# scripts/dev.sh puts both programs in build/tools; installed ones do as well.
TOOLS="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build/tools"
PATH="$TOOLS:$PATH"
EXPORTER="$(command -v prometheus-node-exporter || command -v node_exporter || true)"
PROMTOOL="$(command -v promtool || true)"
if [[ -z "$EXPORTER" || -z "$PROMTOOL" ]]; then
  echo "prometheus-node-exporter or promtool is not installed: skipped"
  exit 77
fi
dir="$(mktemp -d)"
exporter=""
cleanup() {
  if [[ -n "$exporter" ]]; then kill "$exporter" 2>/dev/null && wait "$exporter" 2>/dev/null || true; fi
  rm -rf "$dir"
}
trap cleanup EXIT
mkdir -p "$dir/textfile" "$dir/tmp"

TMPDIR="$dir/tmp" XDG_DATA_HOME="$dir/data" "$QUARBEL" run cpuInteger memoryStream --quick --no-history \
  --metrics "$dir/textfile/quarbel.prom" >/dev/null
"$PROMTOOL" check metrics <"$dir/textfile/quarbel.prom"

# A free port: the exporter says so at once when the one tried is taken.
scrape=""
for _ in 1 2 3 4 5; do
  port=$((20000 + RANDOM % 20000))
  "$EXPORTER" --web.listen-address="127.0.0.1:$port" --collector.disable-defaults --collector.textfile \
    --collector.textfile.directory="$dir/textfile" >"$dir/exporter.log" 2>&1 &
  exporter=$!
  for _ in $(seq 50); do
    if { exec 3<>"/dev/tcp/127.0.0.1/$port"; } 2>/dev/null; then
      printf 'GET /metrics HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n' >&3
      scrape="$(cat <&3)"
      exec 3<&-
      break
    fi
    kill -0 "$exporter" 2>/dev/null || break
    sleep 0.1
  done
  [[ -n "$scrape" ]] && break
  kill "$exporter" 2>/dev/null || true
  wait "$exporter" 2>/dev/null || true
  exporter=""
done
[[ -n "$scrape" ]] || { echo "node exporter did not answer"; cat "$dir/exporter.log"; exit 1; }

fail=0
for series in 'quarbel_score{benchmark="cpuInteger"}' 'quarbel_score{benchmark="memoryStream"}' \
  'quarbel_primary_bytes_per_second{benchmark="memoryStream",label="Bandwidth"}' 'quarbel_run_complete 1' \
  'node_textfile_scrape_error 0'; do
  grep -qF "$series" <<<"$scrape" || { echo "missing from the scrape: $series"; fail=1; }
done
[[ $fail -eq 0 ]] && echo "node exporter served $(grep -c '^quarbel_' <<<"$scrape") quarbel series"
exit $fail

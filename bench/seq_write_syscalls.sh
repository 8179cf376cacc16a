#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Where SSD Sequential's write figure and fio's part: both tools write the same file (buffered
# 16 MiB requests, fsync at the end) under strace, alternating, and the script prints per round
#   - each tool's system calls on the file (count and size of the writes, the syncs), so that
#     any difference in the pattern shows, and
#   - the rate each tool reports beside the rate of its own system calls (bytes over the span
#     from the first write's start to the sync's end): where ours reports less than its calls
#     took, the time is Quarbel's; where both tools' call rates differ, the disk gave them
#     different rates for the same calls.
# strace adds microseconds to calls that take milliseconds.
#   bench/seq_write_syscalls.sh [build dir, default build/release]
# Environment: SCRATCH (default $TMPDIR or /tmp), REPS (default 6), SIZE_MIB (default 1024).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
BUILD="${1:-$ROOT/build/release}"
SCRATCH="${SCRATCH:-${TMPDIR:-/tmp}}"
REPS="${REPS:-6}"
SIZE_MIB="${SIZE_MIB:-1024}"
command -v fio >/dev/null && command -v strace >/dev/null || { echo "needs fio and strace" >&2; exit 1; }
OURS="$(storage_bench "$BUILD")"
WORK="$(mktemp -d "$SCRATCH/quarbel-strace-XXXXXX")"
trap 'rm -rf "$WORK"' EXIT
TRACE=(strace -f -ttt -T -e trace=openat,write,pwrite64,fsync,fdatasync,close)

ours() {
  TMPDIR="$WORK" "${TRACE[@]}" -o "$WORK/ours.trace" "$OURS" sequential 16 $((SIZE_MIB / 16)) 2>/dev/null |
    sed -E 's/.*write=([0-9.]+).*/\1/' >"$WORK/ours.rate"
}
theirs() {
  rm -f "$WORK/fio.bin"
  "${TRACE[@]}" -o "$WORK/fio.trace" fio --name=job --filename="$WORK/fio.bin" --rw=write --ioengine=psync \
    --iodepth=1 --numjobs=1 --fallocate=none --invalidate=0 --bs=16M --size="${SIZE_MIB}M" --direct=0 \
    --end_fsync=1 --output-format=json |
    python3 -c 'import json,sys; w=json.load(sys.stdin)["jobs"][0]["write"]; print(w["io_bytes"]/(w["runtime"]/1000)/1048576)' \
      >"$WORK/fio.rate"
  rm -f "$WORK/fio.bin"
}

analyse() { # analyse TOOL FILE-PATTERN
  python3 - "$WORK/$1.trace" "$(cat "$WORK/$1.rate")" "$1" "$2" <<'PY'
import re, sys, collections
trace, reported, tool, pattern = sys.argv[1], float(sys.argv[2]), sys.argv[3], sys.argv[4]
done_re = re.compile(r'^(\d+)\s+([\d.]+) (\w+)\((.*)\)\s+= (-?\d+).*<([\d.]+)>$')
unfinished_re = re.compile(r'^(\d+)\s+([\d.]+) (\w+)\((.*) <unfinished \.\.\.>$')
resumed_re = re.compile(r'^(\d+)\s+[\d.]+ <\.\.\. (\w+) resumed>.*\)\s+= (-?\d+).*<([\d.]+)>$')
calls, pending = [], {}
for line in open(trace):
    line = line.strip()
    if m := done_re.match(line):
        calls.append((m[1], float(m[2]), m[3], m[4], int(m[5]), float(m[6])))
    elif m := unfinished_re.match(line):
        pending[m[1]] = (float(m[2]), m[3], m[4])
    elif (m := resumed_re.match(line)) and m[1] in pending:
        start, call, args = pending.pop(m[1])
        calls.append((m[1], start, call, args, int(m[3]), float(m[4])))
calls.sort(key=lambda c: c[1])
fds, sizes, first, end, syncs, in_calls = set(), collections.Counter(), None, None, 0, 0.0
for pid, start, call, args, result, took in calls:
    if call == "openat" and re.search(pattern, args) and result >= 0:
        fds.add((pid, str(result)))
        continue
    fd = (pid, args.split(",")[0].strip())
    if fd not in fds:
        continue
    if call in ("write", "pwrite64") and result > 0:
        sizes[result] += 1
        first = start if first is None else first
        in_calls += took
    elif call in ("fsync", "fdatasync") and first is not None:
        syncs += 1
        end = start + took
        in_calls += took
    elif call == "close":
        fds.discard(fd)
total = sum(size * count for size, count in sizes.items())
span = end - first
calls_rate = total / span / 1048576
pattern_text = ", ".join(f"{count} x {size >> 20} MiB" for size, count in sorted(sizes.items()))
print(f"  {tool:4} writes {pattern_text}, {syncs} sync; reported {reported:8.1f} MB/s, "
      f"its calls {calls_rate:8.1f} MB/s (reported/calls {reported / calls_rate:.3f}); "
      f"in the kernel {100 * in_calls / span:.1f} % of the span")
print(f"RATE {tool} {reported} {calls_rate}", file=sys.stderr)
PY
}

for ((round = 1; round <= REPS; round++)); do
  echo "round $round of $REPS"
  if ((round % 2)); then ours; theirs; else theirs; ours; fi
  analyse ours 'sequential|quarbel' 2>>"$WORK/rates"
  analyse fio 'fio\.bin' 2>>"$WORK/rates"
done
python3 - "$WORK/rates" <<'PY'
import statistics, sys, collections
rates = collections.defaultdict(lambda: ([], []))
for line in open(sys.argv[1]):
    _, tool, reported, calls = line.split()
    rates[tool][0].append(float(reported)); rates[tool][1].append(float(calls))
ours, fio = rates["ours"], rates["fio"]
med = statistics.median
print(f"median reported ours/fio {med(ours[0]) / med(fio[0]):.3f}; median call rate ours/fio "
      f"{med(ours[1]) / med(fio[1]):.3f}; ours reported/own calls {med(a / b for a, b in zip(*ours)):.3f}, "
      f"fio's {med(a / b for a, b in zip(*fio)):.3f}")
PY

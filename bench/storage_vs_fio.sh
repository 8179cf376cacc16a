#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the three storage workloads and fio, configured the same way (block size, buffered
# or direct I/O, fsync at the end of a write pass, one job, queue depth 1, the same file
# sizes), side by side on the same directory, and prints ours / fio for each figure.
#
#   bench/storage_vs_fio.sh [build dir]       (default build/release, built on demand)
#
# Environment: SCRATCH (directory for all files, default $TMPDIR or /tmp), REPS (rounds,
# default 5; the median ratio is reported), SIZE_MIB (file size of every test, default 256),
# RANDOM_SECONDS (time of each random phase, default 2).
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
source "$ROOT/bench/common.sh"
BUILD="${1:-$ROOT/build/release}"
SCRATCH="${SCRATCH:-${TMPDIR:-/tmp}}"
REPS="${REPS:-5}"
SIZE_MIB="${SIZE_MIB:-256}"
RANDOM_SECONDS="${RANDOM_SECONDS:-2}"

command -v fio >/dev/null || { echo "fio is not installed (scripts/dev.sh installs it)" >&2; exit 1; }
OURS="$(storage_bench "$BUILD")"

WORK="$(mktemp -d "$SCRATCH/quarbel-fio-XXXXXX")"
trap 'rm -rf "$WORK"' EXIT
FIO_FILE="$WORK/fio.bin"
COMMON=(--ioengine=psync --iodepth=1 --numjobs=1 --fallocate=none --invalidate=0 --output-format=json)

# fio_rate <rw> <MB/s|IOPS> [options...]: one fio job on $FIO_FILE, its rate on stdout.
fio_rate() {
  local rw="$1" what="$2"
  shift 2
  fio --name=job --filename="$FIO_FILE" --rw="$rw" "${COMMON[@]}" "$@" | python3 -c '
import json, sys
job = json.load(sys.stdin)["jobs"][0]
side = job["read"] if job["read"]["io_bytes"] > 0 else job["write"]
if sys.argv[1] == "IOPS":
    print("%.3f" % side["iops"])
else:
    print("%.3f" % (side["io_bytes"] / (side["runtime"] / 1000.0) / 1048576.0))
' "$what"
}

# ours <args...>: "read write" from the bench executable, run with TMPDIR=$WORK.
ours() { TMPDIR="$WORK" "$OURS" "$@" 2>/dev/null | sed -E 's/read=([0-9.]+) write=([0-9.]+)/\1 \2/'; }

declare -A RATIOS OUR_VALUES FIO_VALUES
add_ratio() {
  RATIOS[$1]+="$(python3 -c "print('%.4f' % ($2 / $3))") "
  OUR_VALUES[$1]+="$2 "
  FIO_VALUES[$1]+="$3 "
}

# Each figure is measured by both tools back to back; the order flips every round so that
# neither tool always meets the other's dirty pages or a busy shared disk first.
seq_ours() { read -r OUR_READ OUR_WRITE < <(ours sequential 16 $((SIZE_MIB / 16))); }
seq_fio() {
  rm -f "$FIO_FILE"
  FIO_WRITE=$(fio_rate write MB/s --bs=16M --size="${SIZE_MIB}M" --direct=0 --end_fsync=1)
  FIO_READ=$(fio_rate read MB/s --bs=16M --size="${SIZE_MIB}M" --direct=0)
  rm -f "$FIO_FILE"
}
real_ours() { read -r OUR_READ OUR_WRITE < <(ours realspeed "$SIZE_MIB" 64 1000 1 1); }
real_fio() {
  rm -f "$FIO_FILE"
  FIO_WRITE=$(fio_rate write MB/s --bs=64M --size="${SIZE_MIB}M" --direct=1 --end_fsync=1)
  FIO_READ=$(fio_rate read MB/s --bs=64M --size="${SIZE_MIB}M" --direct=1)
  rm -f "$FIO_FILE"
}
rand_ours() { read -r OUR_READ OUR_WRITE < <(ours random 8 $((SIZE_MIB / 8)) "$((RANDOM_SECONDS * 2))"); }
rand_fio() {
  rm -f "$FIO_FILE"
  fio_rate write MB/s --bs=8M --size="${SIZE_MIB}M" --direct=0 --end_fsync=1 >/dev/null # prepare the file
  local options=(--bs=4k --size="${SIZE_MIB}M" --direct=0 --norandommap --randrepeat=0 --time_based
                 --runtime="$RANDOM_SECONDS")
  FIO_READ=$(fio_rate randread IOPS "${options[@]}")
  FIO_WRITE=$(fio_rate randwrite IOPS "${options[@]}" --fsync=2048)
  rm -f "$FIO_FILE"
}

# compare <test> <unit> <round>: runs both tools and records the ratios.
compare() {
  if (($3 % 2)); then "$1_ours"; "$1_fio"; else "$1_fio"; "$1_ours"; fi
  add_ratio "$1_write" "$OUR_WRITE" "$FIO_WRITE"
  add_ratio "$1_read" "$OUR_READ" "$FIO_READ"
  printf '  %-5s write ours %12s fio %12s %s; read ours %12s fio %12s %s\n' \
    "$1" "$OUR_WRITE" "$FIO_WRITE" "$2" "$OUR_READ" "$FIO_READ" "$2" >&2
}

# ssdSequential: buffered 16 MiB requests, fsync at the end of writing, read back from cache.
# ssdRealSpeed: O_DIRECT 64 MiB requests on a fresh file, one write pass with fsync, one read pass.
# ssdRandom: buffered 4 KiB pread/pwrite at page-aligned offsets, fsync after every 2048 writes.
for ((rep = 1; rep <= REPS; rep++)); do
  echo "round $rep of $REPS" >&2
  compare seq MB/s "$rep"
  compare real MB/s "$rep"
  compare rand IOPS "$rep"
done

median() { python3 -c "import statistics, sys; print('%.3f' % statistics.median(map(float, sys.argv[1:])))" "$@"; }
# The coefficient of variation over the rounds: fio's is what the disk and the machine vary by
# themselves; what ours has beyond it is ours.
cv() { python3 -c "import statistics, sys; v = list(map(float, sys.argv[1:])); print('%.1f' % (100 * statistics.stdev(v) / statistics.mean(v)) if len(v) > 1 else '-')" "$@"; }
echo "figure                 median ours/fio   CV ours %   CV fio %   (ratios of the rounds)"
for key in seq_write seq_read real_write real_read rand_read rand_write; do
  # shellcheck disable=SC2086
  printf '%-22s %8s %16s %10s      %s\n' "$key" "$(median ${RATIOS[$key]})" "$(cv ${OUR_VALUES[$key]})" \
    "$(cv ${FIO_VALUES[$key]})" "${RATIOS[$key]}"
done

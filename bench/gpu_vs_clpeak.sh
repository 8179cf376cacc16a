#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The GPU benchmarks beside clpeak on the same device: the compute kernel through Vulkan
# (metalCompute) and OpenCL (openCLCompute) against clpeak's single-precision peak, RAW Metal
# Decode's bytes per second against clpeak's global memory bandwidth (the decode's bound), and
# each benchmark's GPU busy time over its wall time. Rounds alternate ours and clpeak, so that
# a noisy machine hits both alike; medians and ratios are printed.
#
#   bench/gpu_vs_clpeak.sh [build dir]       (default build/release, built on demand)
#
# Environment: REPS (rounds, default 3), QUICK=1 (our budgets divided by ten),
# CLPEAK_ARGS (e.g. "-p 1 -d 0" to point clpeak at another platform).
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${1:-$ROOT/build/release}"
REPS="${REPS:-3}"
QUICK_FLAG=()
[[ "${QUICK:-0}" == 1 ]] && QUICK_FLAG=(--quick)

command -v clpeak >/dev/null || { echo "clpeak is not installed (scripts/dev.sh installs it)" >&2; exit 1; }
if [[ ! -x "$BUILD/src/cli/quarbel" ]]; then
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUARBEL_BUILD_TESTS=OFF >/dev/null
  cmake --build "$BUILD" -j2 --target quarbel >/dev/null
fi
QUARBEL="$BUILD/src/cli/quarbel"

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
export XDG_DATA_HOME="$WORK/data" # benchmark runs stay out of the user's run history

for round in $(seq 1 "$REPS"); do
  "$QUARBEL" run metalCompute openCLCompute rawMetalDecode "${QUICK_FLAG[@]}" --json "$WORK/ours-$round.json" >/dev/null
  # shellcheck disable=SC2086
  clpeak --compute-sp --global-bandwidth ${CLPEAK_ARGS:-} >"$WORK/clpeak-$round.txt"
  echo "round $round of $REPS done" >&2
done

python3 - "$WORK" "$REPS" "$("$QUARBEL" info | sed -n 's/^GPU (Vulkan) *//p')" <<'PY'
import json, re, statistics, sys
work, reps, vulkan_device = sys.argv[1], int(sys.argv[2]), sys.argv[3]
vulkan, opencl, raw, opencl_device, clpeak, bandwidth = [], [], [], "", {}, []
busy, placement, groups = {}, {}, {}
# One 8K frame: the 16-bit samples read (about five times over, by the neighbours; caches take
# the repeats, so once counts), the 32-bit pixels written.
FRAME_BYTES = 7680 * 4320 * (2 + 4)
for r in range(1, reps + 1):
    report = json.load(open(f"{work}/ours-{r}.json"))
    for entry in report["results"]:
        if entry["status"] != "ok":
            sys.exit(f"{entry['id']} did not run: {entry['detail']}")
        rate = float(entry["primary"]["value"])
        gpu = entry.get("gpu") or {}
        if gpu.get("busyFraction") is not None:
            busy.setdefault(entry["id"], []).append(gpu["busyFraction"])
        placement[entry["id"]] = gpu.get("memory") or "(the API's)"
        groups[entry["id"]] = gpu.get("workgroupSize")
        if entry["id"] == "metalCompute":
            vulkan.append(rate)
        elif entry["id"] == "rawMetalDecode":
            raw.append(rate)
        else:
            opencl.append(rate)
            opencl_device = entry["secondary"]["value"]
    text = open(f"{work}/clpeak-{r}.txt").read()
    device = re.search(r"Device: (.*)", text)
    clpeak_device = device.group(1).strip() if device else "?"
    compute = text.split("Single-precision compute")[-1]
    for width, value in re.findall(r"^\s*(float\d*)\s*:\s*([0-9.]+)", compute, re.M):
        clpeak.setdefault(width, []).append(float(value))
    memory = text.split("Global memory bandwidth")[-1].split("Single-precision compute")[0]
    rates = [float(v) for v in re.findall(r"^\s*float\d*\s*:\s*([0-9.]+)", memory, re.M)]
    if rates:
        bandwidth.append(max(rates))
if not clpeak:
    sys.exit("clpeak printed no single-precision figures")
med = {w: statistics.median(v) for w, v in clpeak.items()}
best_width = max(med, key=med.get)
best = med[best_width]
print(f"Vulkan device: {vulkan_device}")
print(f"OpenCL device (clpeak): {clpeak_device}; openCLCompute ran on the {opencl_device}")
print(f"median of {reps} rounds, GFLOPS (ours: nominal 42 operations per element-iteration)")
print(f"  metalCompute  (Vulkan)  {statistics.median(vulkan):10.2f}   / clpeak best {statistics.median(vulkan) / best:.3f}")
print(f"  openCLCompute (OpenCL)  {statistics.median(opencl):10.2f}   / clpeak best {statistics.median(opencl) / best:.3f}")
for width in sorted(med, key=lambda w: int(w[5:] or 1)):
    print(f"  clpeak {width:<8}        {med[width]:10.2f}")
print(f"  Vulkan / OpenCL: {statistics.median(vulkan) / statistics.median(opencl):.3f}   (goal >= 0.97)")
if bandwidth and raw:
    gbps = statistics.median(bandwidth)
    fps = statistics.median(raw)
    bound = gbps * 1e9 / FRAME_BYTES
    print(f"RAW Metal Decode: {fps:.2f} FPS = {fps * FRAME_BYTES / 1e9:.1f} GB/s; clpeak global bandwidth {gbps:.1f} GB/s "
          f"bounds it near {bound:.0f} FPS: {fps / bound:.3f} of the bound (goal >= 0.5 on a discrete GPU)")
print("GPU busy / wall (goal >= 0.9), memory, workgroup size:")
for bid in ("metalCompute", "rawMetalDecode", "openCLCompute"):
    if bid in busy:
        print(f"  {bid:15} {statistics.median(busy[bid]):.3f}   {placement.get(bid)}   {groups.get(bid)}")
PY

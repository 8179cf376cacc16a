# SPDX-License-Identifier: Apache-2.0
# Sourced by the benchmark scripts: a private folder that also holds the XDG folders (so that
# no benchmark run lands in the user's history or settings), an Xvfb display for the window
# benchmarks, and the median of the numbers on standard input.

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# Sets PRIVATE to a new folder, removed on exit, and points the XDG folders into it.
use_private_folders() {
  PRIVATE="$(mktemp -d)"
  export XDG_CONFIG_HOME="$PRIVATE/config" XDG_RUNTIME_DIR="$PRIVATE/runtime" XDG_DATA_HOME="$PRIVATE/data"
  mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
  trap 'rm -rf "$PRIVATE"' EXIT
}

# After use_private_folders: starts Xvfb on a display picked at random from $1 to $1 + 49
# and exports DISPLAY; the display stops on exit.
start_display() {
  export DISPLAY=":$(($1 + RANDOM % 50))"
  Xvfb "$DISPLAY" -screen 0 1280x880x24 -nolisten tcp -noreset >/dev/null 2>&1 &
  XVFB=$!
  trap 'kill $XVFB 2>/dev/null; rm -rf "$PRIVATE"' EXIT
  sleep 1
}

# storage_bench BUILD: the path of the storage workloads' bench program in BUILD, a Release
# build with the benchmarks, configured there when it is missing and brought up to date, so
# that a measurement never runs an older build of the workloads.
storage_bench() {
  build_release_targets "$1" quarbel_storage_bench
  echo "$1/bench/storage/quarbel_storage_bench"
}

# build_release_targets BUILD TARGET...: configures BUILD as a Release build with the benchmarks
# and without the tests when it has not been configured yet, then brings the targets up to date.
build_release_targets() {
  local build="$1" root
  shift
  root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
  if [[ ! -f "$build/build.ninja" ]]; then
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUARBEL_BUILD_TESTS=OFF \
      -DQUARBEL_BUILD_BENCHMARKS=ON >/dev/null
  fi
  cmake --build "$build" -j "$(nproc)" --target "$@" >/dev/null
}

# build_programs BUILD TARGET...: brings the named targets of BUILD up to date and points CLI
# and GUI at its two programs.
build_programs() {
  local build="$1"
  shift
  cmake --build "$build" -j "$(nproc)" --target "$@" >/dev/null
  CLI="$build/src/cli/quarbel"
  GUI="$build/src/app/quarbel-gui"
}

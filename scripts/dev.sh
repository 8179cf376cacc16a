#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Quarbel's one entry point for building on Debian 12: installs the missing packages,
# configures, builds, then runs what was asked.
#   scripts/dev.sh suite      build and run the full suite headless
#   scripts/dev.sh test       build and run the tests
#   scripts/dev.sh sanitize   build and run the tests under address+undefined and thread sanitizers
#   scripts/dev.sh build      build only
#   scripts/dev.sh app        build and start the desktop program (arguments go to quarbel-gui)
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
ACTION="${1:-build}"
shift || true

PACKAGES=(
  cmake ninja-build g++ pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  qt6-base-dev qt6-svg-dev fonts-inter libxcb1-dev
  libtbb-dev libsleef-dev libssl-dev libsensors-dev libhwloc-dev
  libcli11-dev nlohmann-json3-dev libboost-dev
  libvulkan-dev libshaderc-dev glslang-tools mesa-vulkan-drivers
  ocl-icd-opencl-dev opencl-headers pocl-opencl-icd
  hyperfine fio clpeak
  qt6-tools-dev qt6-l10n-tools
  xvfb xauth xdotool desktop-file-utils appstream
  python3-pyatspi at-spi2-core dbus
  dpkg-dev groff-base lintian locales
)

install_missing_packages() {
  local missing=()
  for package in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# The number-format tests switch the C locale to German to prove that no text the program
# writes follows it; Debian's minimal images carry no locale but C.
provide_german_locale() {
  locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$' && return 0
  local sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" sed -i 's/^# *\(de_DE.UTF-8 UTF-8\)/\1/' /etc/locale.gen
  "${sudo[@]}" locale-gen >/dev/null
}

# The metrics test reads its file with Prometheus's own tools. Only their programs are taken
# out of Debian's packages, into build/tools: installing the packages would also set up and
# start a Prometheus server and an exporter on this machine.
fetch_prometheus_tools() {
  local tools="$ROOT/build/tools"
  [[ -x "$tools/promtool" && -x "$tools/prometheus-node-exporter" ]] && return 0
  local downloads
  downloads="$(mktemp -d)"
  if (cd "$downloads" && apt-get download -qq prometheus prometheus-node-exporter >/dev/null 2>&1); then
    mkdir -p "$tools"
    for deb in "$downloads"/*.deb; do
      dpkg-deb --fsys-tarfile "$deb" | tar -x -C "$downloads" ./usr/bin/
    done
    cp "$downloads/usr/bin/promtool" "$downloads/usr/bin/prometheus-node-exporter" "$tools/"
  else
    echo "Prometheus's tools could not be fetched: the metrics test will be skipped" >&2
  fi
  rm -rf "$downloads"
}

# configure_and_build <build dir> [cmake args...]
configure_and_build() {
  local dir="$1"
  shift
  if [[ ! -f "$dir/build.ninja" ]]; then
    cmake -S "$ROOT" -B "$dir" -G Ninja "$@"
  fi
  cmake --build "$dir" -j "$(nproc)"
}

install_missing_packages
provide_german_locale
case "$ACTION" in
  build)
    configure_and_build "$ROOT/build/dev" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ;;
  app)
    configure_and_build "$ROOT/build/dev" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    exec "$ROOT/build/dev/src/app/quarbel-gui" "$@"
    ;;
  suite)
    configure_and_build "$ROOT/build/release" -DCMAKE_BUILD_TYPE=Release -DQUARBEL_BUILD_TESTS=OFF
    exec "$ROOT/build/release/src/cli/quarbel" run --all "$@"
    ;;
  test)
    fetch_prometheus_tools
    configure_and_build "$ROOT/build/dev" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    ctest --test-dir "$ROOT/build/dev" --output-on-failure --no-tests=error -j "$(nproc)" "$@"
    ;;
  sanitize)
    configure_and_build "$ROOT/build/asan" -DCMAKE_BUILD_TYPE=Debug "-DQUARBEL_SANITIZE=address;undefined"
    # The Vulkan loader unloads Mesa's lavapipe before the leak check, and what that driver keeps
    # for the life of the process then has no module name for the suppression to match: loaded
    # from the start, it stays until the end (ASan then need not come first in the list).
    preload=()
    lavapipe="$(ls /usr/lib/*/libvulkan_lvp.so 2>/dev/null | head -1 || true)"
    [[ -n "$lavapipe" ]] && preload=(LD_PRELOAD="$lavapipe")
    env "${preload[@]}" ASAN_OPTIONS=detect_leaks=1:verify_asan_link_order=0 \
      LSAN_OPTIONS="suppressions=$ROOT/tests/lsan.supp" UBSAN_OPTIONS=print_stacktrace=1 \
      ctest --test-dir "$ROOT/build/asan" --output-on-failure --no-tests=error -j "$(nproc)" "$@"
    configure_and_build "$ROOT/build/tsan" -DCMAKE_BUILD_TYPE=Debug -DQUARBEL_SANITIZE=thread
    TSAN_OPTIONS="halt_on_error=1 suppressions=$ROOT/tests/tsan.supp" \
      ctest --test-dir "$ROOT/build/tsan" --output-on-failure --no-tests=error -R "BenchmarkStore|RunSession|QuarbelCommand|ConcurrentRunWatch|CooldownPause|RunClock|RunWindows|ThermalMonitor|WorkloadPass|SensorTrace" "$@"
    ;;
  *)
    echo "usage: scripts/dev.sh {suite|test|sanitize|build|app} [args...]" >&2
    exit 2
    ;;
esac

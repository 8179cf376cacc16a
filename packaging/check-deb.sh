#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the Debian package, installs it, runs both programs from the installed paths, and
# removes it again, leaving the machine as it was found. Needs root (or sudo) and Debian 12
# with the build packages of scripts/dev.sh.
#   packaging/check-deb.sh [BUILD_DIR]     (default: build/pkg, a Release build without tests)
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${1:-$ROOT/build/pkg}"
JOBS="${JOBS:-$(nproc)}"

sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
step() { printf '\n== %s\n' "$*"; }

if dpkg-query -W -f='${Status}' quarbel 2>/dev/null | grep -q 'install ok installed'; then
  echo "check-deb: quarbel is installed already; remove it first, this check installs and removes its own" >&2
  exit 2
fi

step "build ($BUILD)"
if [[ ! -f $BUILD/build.ninja ]]; then
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUARBEL_BUILD_TESTS=OFF
fi
nice -n 5 cmake --build "$BUILD" -j "$JOBS"
rm -f "$BUILD"/quarbel_*.deb
(cd "$BUILD" && cpack -G DEB) | grep -E 'package: |Error|Warning' || true
debs=("$BUILD"/quarbel_*.deb)
# apt-get takes a path only when it starts with / or ./
deb="$(realpath "${debs[0]}")"
[[ -f $deb ]] || { echo "check-deb: cpack wrote no package" >&2; exit 1; }

step "package $(basename "$deb"), $(stat -c %s "$deb") bytes"
dpkg-deb -f "$deb" Package Version Architecture Section Installed-Size Depends Recommends Suggests
depends="$(dpkg-deb -f "$deb" Depends)"
for needed in libqt6widgets6 libvulkan1 ocl-icd-libopencl1; do
  [[ $depends == *"$needed"* ]] || { echo "check-deb: Depends lacks $needed" >&2; exit 1; }
done
if command -v lintian >/dev/null; then
  status=0
  findings="$(lintian --fail-on error,warning "$deb" 2>&1)" || status=$?
  grep -v 'running with root privileges' <<<"$findings" || true
  [[ $status -eq 0 ]] || { echo "check-deb: lintian found errors or warnings" >&2; exit 1; }
  echo "lintian: no errors or warnings"
else
  echo "lintian: not installed, skipped"
fi

packages_before="$(mktemp)"
home="$(mktemp -d)"
cleanup() {
  step "remove"
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq --purge quarbel >/dev/null || true
  # Whatever the package pulled in goes too.
  local added
  added="$(comm -13 "$packages_before" <(dpkg-query -W -f='${db:Status-Abbrev} ${binary:Package}\n' | awk '$1 == "ii" { print $2 }' | sort))"
  if [[ -n $added ]]; then
    echo "removing what the package pulled in: $added"
    # shellcheck disable=SC2086
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq --purge $added >/dev/null || true
  fi
  rm -rf "$packages_before" "$home"
  if dpkg-query -W -f='${Status}' quarbel 2>/dev/null | grep -q installed; then
    echo "check-deb: quarbel is still installed" >&2
    exit 1
  fi
  echo "quarbel removed"
}
dpkg-query -W -f='${db:Status-Abbrev} ${binary:Package}\n' | awk '$1 == "ii" { print $2 }' | sort >"$packages_before"
trap cleanup EXIT

step "install"
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$deb" 2>&1 | grep -v '^debconf: ' | tail -n 3

# The runs keep nothing in root's home: history, lock and caches go to a private folder.
export XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache" XDG_CONFIG_HOME="$home/config"
export XDG_RUNTIME_DIR="$home/runtime" TMPDIR="$home/tmp"
mkdir -p "$XDG_RUNTIME_DIR" "$TMPDIR"
chmod 700 "$XDG_RUNTIME_DIR"

step "installed files"
command -v quarbel quarbel-gui
[[ $(command -v quarbel) == /usr/bin/quarbel && $(command -v quarbel-gui) == /usr/bin/quarbel-gui ]] ||
  { echo "check-deb: the programs on PATH are not the installed ones" >&2; exit 1; }
quarbel --version
# The man pages as the package holds them (a system may be set to leave man pages out).
for page in quarbel quarbel-gui; do
  warnings="$(dpkg-deb --fsys-tarfile "$deb" | tar -xO "./usr/share/man/man1/$page.1.gz" | zcat |
    groff -man -Tutf8 -ww -z 2>&1)"
  [[ -z $warnings ]] || { echo "$page.1: $warnings" >&2; exit 1; }
done
echo "man pages: no groff warnings"
command -v man >/dev/null && man -w quarbel quarbel-gui
bash -c 'source /usr/share/bash-completion/completions/quarbel && source /usr/share/bash-completion/completions/quarbel-gui && complete -p quarbel quarbel-gui'
if command -v systemd-analyze >/dev/null; then
  systemd-analyze verify /usr/lib/systemd/system/quarbel-benchmark.service /usr/lib/systemd/system/quarbel-benchmark.timer
  echo "systemd-analyze verify: clean"
fi
if compgen -G "/etc/systemd/system/*.wants/quarbel-benchmark.*" >/dev/null; then
  echo "check-deb: the timer is enabled; it must be off by default" >&2
  exit 1
fi
echo "quarbel-benchmark.timer: not enabled"
[[ -f /etc/default/quarbel ]] && echo "/etc/default/quarbel: present"
# The group that the udev rule lets read the RAPL energy counters.
getent group quarbel >/dev/null || { echo "check-deb: postinst added no quarbel group" >&2; exit 1; }
if command -v udevadm >/dev/null; then
  udevadm verify /usr/lib/udev/rules.d/60-quarbel-powercap.rules 2>/dev/null ||
    grep -q 'SUBSYSTEM=="powercap"' /usr/lib/udev/rules.d/60-quarbel-powercap.rules
fi
echo "quarbel group and powercap udev rule: present"

step "quarbel list"
quarbel list

step "quarbel reference"
references="$(quarbel reference)"
echo "$references"
grep -q '^h100-xeon16 ' <<<"$references" ||
  { echo "check-deb: the installed reference results are not found" >&2; exit 1; }

step "quarbel run cpuInteger --quick --no-history"
quarbel run cpuInteger --quick --no-history

step "xvfb-run -a quarbel-gui --run cpuInteger --quick --quit-when-done"
xvfb-run -a -s "-screen 0 1280x880x24 -nolisten tcp" quarbel-gui --run cpuInteger --quick --quit-when-done

step "passed"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Start-up cost of the command line: `quarbel --version` and `quarbel list`, with hyperfine.
set -euo pipefail
QUARBEL="${1:-build/release/src/cli/quarbel}"
hyperfine --warmup 5 --runs 50 -N "$QUARBEL --version" "$QUARBEL list"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Refreshes translations/*.ts from the window's sources: new texts arrive unfinished, texts
# that are gone are dropped. The build compiles the .ts files; this only collects the texts.
#   scripts/update_translations.sh
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
LUPDATE=/usr/lib/qt6/bin/lupdate
[[ -x "$LUPDATE" ]] || LUPDATE="$(command -v lupdate)"
cd "$ROOT"
# The catalogue marks its texts with QUARBEL_UI_TEXT (plain C++); the window translates them.
"$LUPDATE" -silent -no-obsolete -locations relative -I src -tr-function-alias QT_TR_NOOP+=QUARBEL_UI_TEXT \
  src/app src/ui/views src/model/catalogue.cpp -ts translations/*.ts

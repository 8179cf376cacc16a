#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Lists every source, shader, script and CMake file under the tree that does not name its
# licence in an SPDX line near its top; exits 1 when there is one, so CI keeps them all named.
# Usage: scripts/check_licence_headers.sh [ROOT]
set -euo pipefail
root="${1:-$(dirname "${BASH_SOURCE[0]}")/..}"
cd "$root"
missing=0
while IFS= read -r -d '' file; do
  if ! head -n 3 "$file" | grep -q 'SPDX-License-Identifier: Apache-2.0'; then
    echo "no SPDX-License-Identifier: Apache-2.0 line in the first three lines: $file"
    missing=$((missing + 1))
  fi
done < <(find src tests bench scripts packaging cmake .ci CMakeLists.txt \
  -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.comp' -o -name '*.vert' -o -name '*.frag' \
  -o -name '*.sh' -o -name '*.py' -o -name '*.cmake' -o -name CMakeLists.txt -o -path .ci/run \) \
  -print0 2>/dev/null)
if [ "$missing" -gt 0 ]; then
  echo "$missing file(s) without a licence line"
  exit 1
fi
echo "every source file names its licence"

#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
cd "$root/build"
ctest --output-on-failure -j"$(nproc)" --timeout 900
# The desktop editor end to end, where a virtual display can be started.
if [[ -x "$root/build/gui/sonvale-gui" ]] && command -v xvfb-run >/dev/null; then
  "$root/scripts/gui-e2e.sh" "$root/build"
fi

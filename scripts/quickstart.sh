#!/usr/bin/env bash
# Installs, builds and runs the demo on generated audio: nothing of the user's is needed.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
exec "$root/scripts/demo.sh" "$root/build/sonvale"

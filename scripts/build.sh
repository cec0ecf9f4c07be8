#!/usr/bin/env bash
# Configures and builds into build/ (or $SONVALE_BUILD_DIR) with the given extra CMake options.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="${SONVALE_BUILD_DIR:-$root/build}"
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="${SONVALE_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null
ninja -C "$dir" -j"$(nproc)"

#!/usr/bin/env bash
# Runs Sonvale on audio it makes itself: nothing of the user's is needed.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
sonvale="${1:-$here/../build/sonvale}"
out="${SONVALE_DEMO_DIR:-$(mktemp -d /tmp/sonvale-demo-XXXXXX)}"
mkdir -p "$out"
export SONVALE_CACHE_DIR="$out/cache"

echo "== Bearbeiten (scripts/demo.sv)"
sed "s|\$OUT|$out|g" "$here/demo.sv" > "$out/demo.sv"
"$sonvale" edit -f "$out/demo.sv"
echo
echo "== Ergebnis"
"$sonvale" info "$out/demo.wav"
echo
echo "Dateien in $out"

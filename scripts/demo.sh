#!/usr/bin/env bash
# Runs Sonvale on audio it makes itself: nothing of the user's is needed.
set -euo pipefail
sonvale="${1:-$(dirname "$0")/../build/sonvale}"
out="${SONVALE_DEMO_DIR:-$(mktemp -d /tmp/sonvale-demo-XXXXXX)}"
export SONVALE_CACHE_DIR="$out/cache"

sox -n -r 44100 -c 2 -b 16 "$out/ton.wav" synth 3 sine 440 sine 660 fade 0.1 3 0.5
"$sonvale" convert "$out/ton.wav" "$out/ton-ulaw.wav" --to ulaw
"$sonvale" convert "$out/ton.wav" "$out/ton-24.wav" --to pcm24
"$sonvale" info "$out/ton.wav" "$out/ton-ulaw.wav" "$out/ton-24.wav"
echo "Ergebnisse in $out"

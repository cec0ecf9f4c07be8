#!/usr/bin/env bash
# Installs, builds and runs Sonvale on generated audio: nothing of the user's is
# needed. With a display the desktop editor opens on the example; without one
# the command-line demo runs and a picture of the editor is written beside its output.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
export SONVALE_DEMO_DIR="${SONVALE_DEMO_DIR:-$(mktemp -d /tmp/sonvale-demo-XXXXXX)}"
"$root/scripts/demo.sh" "$root/build/sonvale"
gui="$root/build/gui/sonvale-gui"
[[ -x "$gui" ]] || exit 0
export SONVALE_CACHE_DIR="$SONVALE_DEMO_DIR/cache"
if [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
  echo
  echo "== Desktop-Editor mit $SONVALE_DEMO_DIR/demo.wav"
  exec "$gui" "$SONVALE_DEMO_DIR/demo.wav"
fi
echo
echo "== Desktop-Editor (ohne Bildschirm: ein Bild des Fensters)"
"$gui" "$SONVALE_DEMO_DIR/demo.wav" --screenshot "$SONVALE_DEMO_DIR/sonvale-editor.png" --size 1200x500 --select 1 2

#!/usr/bin/env bash
# The desktop editor end to end on a virtual display, driven by keys alone: it
# opens a generated tone, selects everything, applies "Verstärken" by -6 dB
# through the Prozesse menu and its dialog, saves and quits. sox then checks
# that the saved file's peak halved. Without Xvfb it says so and passes.
#
#   gui-e2e.sh [BUILD_DIR]   (default build/)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-${SONVALE_BUILD_DIR:-$root/build}}"
program="$build/gui/sonvale-gui"
if ! command -v xvfb-run >/dev/null || ! command -v sox >/dev/null; then
  echo "gui-e2e: xvfb-run or sox fehlt, übersprungen"
  exit 0
fi
[[ -x "$program" ]] || { echo "gui-e2e: $program fehlt" >&2; exit 2; }

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
# Settings and the sound cache of this run stay in its folder.
export HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_CACHE_HOME="$work/cache" XDG_DATA_HOME="$work/data"
export XDG_RUNTIME_DIR="$work/run" SONVALE_AUDIO_BACKEND=null SONVALE_CACHE_DIR="$work/soundcache"
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
sox -n -r 44100 -c 1 -b 16 "$work/tone.wav" synth 1 sine 440 vol 0.8

# Alt+P opens Prozesse on its first entry (Umkehren); the next is Verstärken.
cat >"$work/keys" <<'KEYS'
Ctrl+A
Alt+P
Down
Return
type -6
Return
Ctrl+S
Ctrl+Q
KEYS
SONVALE_GUI_SCRIPT="$work/keys" timeout 120 xvfb-run -a -s "-screen 0 1280x800x24" "$program" "$work/tone.wav"

peak="$(sox "$work/tone.wav" -n stat 2>&1 | awk '/Maximum amplitude/ {print $3}')"
if awk -v p="$peak" 'BEGIN { exit !(p > 0.38 && p < 0.42) }'; then
  echo "gui-e2e: gespeichert mit Spitze $peak (vorher 0.8), in Ordnung"
else
  echo "gui-e2e: die Spitze der gespeicherten Datei ist $peak, erwartet etwa 0.4" >&2
  exit 1
fi

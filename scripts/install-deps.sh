#!/usr/bin/env bash
# Installs what a fresh Debian machine lacks for building and testing Sonvale.
# Asks apt only when something is missing, so a prepared machine starts at once.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkgconf clang libclang-rt-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libgsm1-dev libfftw3-dev libsoxr-dev libedit-dev libpulse-dev libasound2-dev
  libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libmp3lame-dev
  libebur128-dev librubberband-dev
  sox libsox-fmt-all ffmpeg sndfile-programs libimage-exiftool-perl espeak-ng time
  pulseaudio pulseaudio-utils
  qt6-base-dev xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installiere: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

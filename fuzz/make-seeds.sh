#!/usr/bin/env bash
# Makes the seed corpora of the fuzz targets in OUT/<target>/: files our own
# writers make (fuzz_seed_writer of the fuzz build) and files sox makes. Nothing
# of it is kept in the repository.
# Usage: fuzz/make-seeds.sh FUZZ_BUILD_DIR OUT_DIR
set -euo pipefail
build="${1:?the fuzz build folder}"
out="${2:?a folder for the seeds}"
rm -rf "$out"
mkdir -p "$out"
"$build/fuzz/fuzz_seed_writer" "$out"

# SDF files of every kind serve the SDF target too; the WAVE and AIFF files serve
# the format dispatch, and the WAVE files the tag reader.
cp "$out/fuzz_effect_chain/"* "$out/fuzz_project_load/"* "$out/fuzz_sdf_reader/"
cp "$out/fuzz_aiff_reader/"*.aif* "$out/fuzz_sound_file/"
cp "$out/fuzz_wave_reader/"*.wav "$out/fuzz_riff_tags/"

if ! command -v sox >/dev/null 2>&1; then
  echo "sox is missing: seeds only from our own writers" >&2
  exit 0
fi
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
wave="$out/fuzz_wave_reader"
raw="$out/fuzz_raw_reader"
mkdir -p "$wave" "$raw"
tone() { sox -n -r 8000 "$@" synth 0.05 sine 440 vol 0.8; }

# WAVE in every encoding sox writes that the reader knows or refuses.
tone -c 1 -e unsigned -b 8 "$wave/sox-u8.wav"
tone -c 2 -e signed -b 16 "$wave/sox-s16.wav"
tone -c 3 -e signed -b 24 "$wave/sox-s24-extensible.wav"
tone -c 1 -e signed -b 32 "$wave/sox-s32.wav"
tone -c 2 -e floating-point -b 32 "$wave/sox-f32.wav"
tone -c 1 -e floating-point -b 64 "$wave/sox-f64.wav"
tone -c 1 -e a-law "$wave/sox-alaw.wav"
tone -c 2 -e u-law "$wave/sox-ulaw.wav"
tone -c 1 -e ima-adpcm "$wave/sox-ima.wav"
tone -c 1 -e gsm-full-rate "$wave/sox-gsm.wav"
tone -c 1 -e ms-adpcm "$wave/sox-msadpcm.wav"

# Headerless files behind the raw target's prefix: layout code, channels, rate (LE).
prefix() { printf "\\x$(printf %02x "$1")\\x$(printf %02x "$2")\\x40\\x1f\\x00\\x00"; }
raw_seed() {
  local code="$1" channels="$2" name="$3"
  shift 3
  tone -c "$channels" "$@" "$tmp/seed"
  { prefix "$code" "$channels"; cat "$tmp/seed"; } >"$raw/sox-$name"
}
raw_seed 0 1 vox -t vox
raw_seed 1 1 ulaw -t raw -e u-law
raw_seed 2 2 alaw -t raw -e a-law
raw_seed 3 2 s16 -t raw -e signed -b 16 -L
raw_seed 4 1 u8 -t raw -e unsigned -b 8
raw_seed 5 1 s8 -t raw -e signed -b 8
raw_seed 6 1 s16be -t raw -e signed -b 16 -B
raw_seed 7 2 f32 -t raw -e floating-point -b 32 -L
raw_seed 8 1 f32be -t raw -e floating-point -b 32 -B
# What sox writes of the formats our readers and FFmpeg's take; a sox without a
# format leaves that seed out. The sounds are short, so that the decoders get
# through many inputs a second.
optional() {
  local path="${*: -1}"
  if ! tone "$@" 2>/dev/null; then
    rm -f "$path"
    echo "sox cannot write $(basename "$path"): left out" >&2
  fi
}
aiff="$out/fuzz_aiff_reader"
any="$out/fuzz_sound_file"
tags="$out/fuzz_riff_tags"
optional -c 1 -e signed -b 16 "$aiff/sox-s16.aiff"
optional -c 2 -e signed -b 24 "$aiff/sox-s24.aiff"
optional -c 1 -e signed -b 8 "$aiff/sox-s8.aiff"
optional -c 1 -e floating-point -b 32 "$aiff/sox-f32.aifc"
optional -c 2 -e signed -b 16 "$aiff/sox-s16.aifc"
optional -c 1 -e u-law "$aiff/sox-ulaw.aifc"
cp "$aiff/"sox-* "$any/" 2>/dev/null || true
optional -c 1 -C 5 "$any/sox.flac"
optional -c 2 -b 24 "$any/sox-24.flac"
optional -c 1 -C 8 "$any/sox.mp3"
optional -c 1 -C 0 "$any/sox.ogg"
optional -c 1 "$any/sox.au"
optional -c 2 "$any/sox.w64"
optional -c 1 "$any/sox.caf"
optional -c 1 "$any/sox.voc"
optional -c 1 "$any/sox.amr-nb"
optional -c 1 "$any/sox.gsm"
optional -c 1 "$any/sox.wv"
optional -c 1 "$any/sox.sph"
optional -c 1 -e ms-adpcm "$any/sox-msadpcm.wav"
# Tag chunks as sox writes them: a comment in the INFO list.
optional -c 1 --comment "Ein Kommentar von sox" "$tags/sox-comment.wav"
optional -c 2 -b 24 --comment "Zweiter" "$tags/sox-comment-24.wav"
echo "seeds: $(find "$out" -type f | wc -l) files in $out"

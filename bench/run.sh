#!/usr/bin/env bash
# bench/run.sh: measures Sonvale against sox, ffmpeg and cp on generated audio.
#
#   bench/run.sh [WORKLOAD...]        (bench/run.sh --list shows the workloads)
#
# Builds a Release binary into build-release/, generates the inputs with sox,
# runs the micro-benchmarks, then runs every workload for Sonvale and for its
# anchors in turn, several rounds, and prints per workload the median wall
# time, the peak memory and the median of the per-round ratios to each anchor,
# with the target and PASS or FAIL. Only paired ratios are judged: on a shared
# machine a single absolute time varies by 30 % and more from run to run.
#
# Settings (environment):
#   SONVALE_BENCH_MINUTES        length of the long inputs (default 60)
#   SONVALE_BENCH_SHORT_MINUTES  length of the MP3, FLAC and reverse inputs (default 10, at most the above)
#   SONVALE_BENCH_RUNS           rounds per workload (default 3)
#   SONVALE_BENCH_MICRO          1 runs the micro-benchmarks first, 0 skips them (default 1)
#   SONVALE_BENCH_BUILD          build folder (default build-release)
#   SONVALE_BENCH_WORK           inputs and outputs (default <build folder>/bench-work)
#   SONVALE_BENCH_JOBS           parallel compile jobs (default 2)
set -euo pipefail
export LC_ALL=C

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BUILD=${SONVALE_BENCH_BUILD:-$ROOT/build-release}
WORK=${SONVALE_BENCH_WORK:-$BUILD/bench-work}
MINUTES=${SONVALE_BENCH_MINUTES:-60}
SHORT_MINUTES=${SONVALE_BENCH_SHORT_MINUTES:-10}
RUNS=${SONVALE_BENCH_RUNS:-3}
MICRO=${SONVALE_BENCH_MICRO:-1}
JOBS=${SONVALE_BENCH_JOBS:-2}
(( SHORT_MINUTES > MINUTES )) && SHORT_MINUTES=$MINUTES

# Peak memory that no Sonvale workload may exceed, whatever the length.
MEMORY_LIMIT_MIB=64

WORKLOADS=(open16 open24 reopen save16 echo echo_cold reverse reverse_cold mp3 flac start_help start_info
  kompressor hochpass tiefpass parametrischereq normalize chor flanger hall tremolo phaser verzerrung)
# Starts of the command timed in one round of a start workload; its time is per start.
STARTS=100
# What the edit verb is told for the effect workloads.
ECHO_COMMAND="effect echo Zunahme=30 Zeit=1000"
REVERSE_COMMAND="select all; reverse"
# The effects set beside sox's nearest effect: what the edit verb is told, and sox's effect.
declare -A FX_COMMAND=(
  [kompressor]="effect kompressor Schwelle=-20 Verhältnis=4 Angriff=10 Freigabe=100"
  [hochpass]="effect hochpass Frequenz=1000 Ordnung=12"
  [tiefpass]="effect tiefpass Frequenz=1000 Ordnung=12"
  [parametrischereq]="effect parametrischereq Frequenz=1000 Verstärkung=6 Güte=1"
  [normalize]="normalize -1"
  [chor]="effect chor Stimmen=2 Verzögerung=20 Tiefe=3 Rate=0.8 Mischung=50"
  [flanger]="effect flanger Verzögerung=1 Tiefe=2 Rate=0.3 Rückkopplung=40 Mischung=50"
  [hall]="effect hall Raumgröße=50 Nachhallzeit=1.8 Dämpfung=40 Vorverzögerung=20 Breite=100 Mischung=30"
  [tremolo]="effect tremolo Rate=4 Tiefe=50"
  [phaser]="effect phaser Stufen=4 Rate=0.5 Tiefe=70 Rückkopplung=40 Frequenz=800 Mischung=50"
  [verzerrung]="effect verzerrung Antrieb=18 Kurve=0 Ton=8000 Mischung=100 Ausgang=-6"
)
declare -A FX_SOX=(
  [kompressor]="compand 0.01,0.1 -90,-90,-20,-20,0,-15"
  [hochpass]="highpass 1000"
  [tiefpass]="lowpass 1000"
  [parametrischereq]="equalizer 1000 1q 6"
  [normalize]="gain -n -1"
  [chor]="chorus 0.7 0.9 20 0.5 0.8 3 -s 20 0.5 0.9 3 -s"
  [flanger]="flanger 1 2 40 50 0.3 sine"
  [hall]="reverb 50 40 50 100 20"
  [tremolo]="tremolo 4 50"
  [phaser]="phaser 0.8 0.74 3 0.4 0.5 -s"
  [verzerrung]="overdrive 18 20"
)

die() { echo "run.sh: $*" >&2; exit 2; }
have() { command -v "$1" > /dev/null 2>&1; }

# ---- build ----------------------------------------------------------------

build() {
  have cmake || die "cmake is missing (apt-get install cmake)"
  have ninja || die "ninja is missing (apt-get install ninja-build)"
  [[ -x /usr/bin/time ]] || die "/usr/bin/time is missing (apt-get install time)"
  echo "== Release build in $BUILD"
  mkdir -p "$BUILD"
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSONVALE_BENCH=ON -DSONVALE_TESTS=OFF \
    > "$BUILD/bench-cmake.log" 2>&1 || { cat "$BUILD/bench-cmake.log" >&2; die "cmake failed"; }
  local targets=(sonvale_cli sonvale_bench sonvale_open sonvale_echo)
  # The format dispatch is there once its header is.
  [[ -f $ROOT/formats/sound_file.h ]] && targets+=(sonvale_open_any)
  # Other engineers' work in progress may break a target for a while: what
  # builds is measured, the rest shows as not built.
  if ! ninja -C "$BUILD" -j "$JOBS" -k 0 "${targets[@]}" > "$BUILD/bench-ninja.log" 2>&1; then
    echo "run.sh: not everything built (see $BUILD/bench-ninja.log):" >&2
    grep -E '^FAILED|error' "$BUILD/bench-ninja.log" | head -10 >&2
  fi
  SONVALE=$BUILD/sonvale
  BENCH=$BUILD/bench
}

# ---- inputs ---------------------------------------------------------------

# Makes file with the sox command that follows (its output in place of @OUT@),
# unless it is there already; through a temporary name, so a broken run leaves
# nothing half made behind.
make_input() {
  local file=$1; shift
  [[ -s $file ]] && return 0
  echo "   $(basename "$file")"
  local tmp=$file.part.${file##*.}
  local args=("${@/@OUT@/$tmp}")
  "${args[@]}" || die "could not make $file"
  mv "$tmp" "$file"
}

inputs() {
  have sox || die "sox is missing (apt-get install sox libsox-fmt-mp3)"
  local in=$WORK/inputs
  mkdir -p "$in"
  IN16=$in/pink-${MINUTES}m-16.wav
  IN24=$in/pink-${MINUTES}m-24.wav
  INF=$in/pink-${MINUTES}m-float.wav
  INS=$in/pink-${SHORT_MINUTES}m-16.wav
  INMP3=$in/pink-${SHORT_MINUTES}m.mp3
  INFLAC=$in/pink-${SHORT_MINUTES}m.flac
  INSEC=$in/pink-1s-16.wav
  # Only what the selected workloads read.
  local need=" " w
  for w in "${SELECTED[@]}"; do
    case $w in
      open24) need+="24 " ;;
      save16) need+="16 float " ;;
      reverse*) need+="16 short " ;;
      mp3) need+="16 short mp3 " ;;
      flac) need+="16 short flac " ;;
      kompressor | hochpass | tiefpass | parametrischereq | normalize | chor | flanger | hall | tremolo | phaser | \
        verzerrung) need+="16 short " ;;
      start_help) ;;
      start_info) need+="second " ;;
      *) need+="16 " ;;
    esac
  done
  echo "== inputs in $in (${MINUTES} min, short ${SHORT_MINUTES} min)"
  local long=$((MINUTES * 60)) short=$((SHORT_MINUTES * 60))
  [[ $need == *" 16 "* ]] && make_input "$IN16" sox -n -r 44100 -c 2 -b 16 @OUT@ synth "$long" pinknoise vol 0.5
  [[ $need == *" 24 "* ]] && make_input "$IN24" sox -n -r 44100 -c 2 -b 24 @OUT@ synth "$long" pinknoise vol 0.5
  [[ $need == *" float "* ]] && make_input "$INF" sox "$IN16" -e floating-point -b 32 @OUT@
  [[ $need == *" short "* ]] && make_input "$INS" sox "$IN16" @OUT@ trim 0 "$short"
  [[ $need == *" mp3 "* ]] && make_input "$INMP3" sox "$INS" -C 192 @OUT@
  [[ $need == *" flac "* ]] && make_input "$INFLAC" sox "$INS" @OUT@
  [[ $need == *" second "* ]] && make_input "$INSEC" sox -n -r 44100 -c 2 -b 16 @OUT@ synth 1 pinknoise vol 0.5
  return 0
}

# ---- timing ---------------------------------------------------------------

RESULTS=""  # lines: workload side round seconds peak_kib status user_seconds

# One timed run: workload side round command...; the side's output folder is
# emptied first unless KEEP is set, and pending writes of earlier runs are
# flushed, both untimed; afterwards the output goes again unless KEEP_OUTPUT is
# set. Wall time from the shell's clock (microseconds), peak memory from
# /usr/bin/time. EXPECT: text the command must print. PER: the time is divided
# by it (a command that runs something PER times).
timed() {
  local workload=$1 side=$2 round=$3; shift 3
  local out=$WORK/out/$workload/$side
  # The program is the first word that is not env or one of its settings.
  local program
  for program in "$@"; do [[ $program == env || $program == *=* ]] || break; done
  if ! command -v "$program" > /dev/null 2>&1; then
    RESULTS+="$workload $side $round 0 0 missing 0"$'\n'
    printf '   %-8s %-12s round %d  %s missing\n' "$workload" "$side" "$round" "$program"
    return 0
  fi
  if [[ -z ${KEEP:-} ]]; then rm -rf "$out"; fi
  mkdir -p "$out"
  sync
  local t0=$EPOCHREALTIME status=0
  /usr/bin/time -f '%M %U' -o "$WORK/time.txt" "$@" > "$WORK/stdout.txt" 2> "$WORK/stderr.txt" || status=$?
  local t1=$EPOCHREALTIME
  local kib user
  read -r kib user < <(tail -1 "$WORK/time.txt")
  [[ $kib =~ ^[0-9]+$ ]] || kib=0
  [[ $user =~ ^[0-9.]+$ ]] || user=0
  local state=ok
  if (( status != 0 )); then
    state=failed
    echo "   $workload/$side failed (exit $status): $(head -c 300 "$WORK/stderr.txt")" >&2
  elif [[ -n ${EXPECT:-} ]] && ! grep -q -- "$EXPECT" "$WORK/stdout.txt"; then
    state=unexpected
    echo "   $workload/$side: output lacks \"$EXPECT\": $(head -c 200 "$WORK/stdout.txt")" >&2
  fi
  [[ -n ${KEEP_OUTPUT:-} ]] || rm -rf "$out"
  local seconds
  seconds=$(awk -v a="$t0" -v b="$t1" -v n="${PER:-1}" 'BEGIN { printf "%.6f", (b - a) / n }')
  user=$(awk -v u="$user" -v n="${PER:-1}" 'BEGIN { printf "%.6f", u / n }')
  RESULTS+="$workload $side $round $seconds $kib $state $user"$'\n'
  printf '   %-8s %-12s round %d  %8.3f s  user %8.3f s  %7.1f MiB  %s\n' "$workload" "$side" "$round" "$seconds" \
    "$user" "$(awk -v k="$kib" 'BEGIN { print k / 1024 }')" "$state"
}

# A side whose Sonvale operation does not exist yet: recorded, not run.
not_yet() {
  local workload=$1 side=$2 round=$3
  RESULTS+="$workload $side $round 0 0 na 0"$'\n'
}

# Puts file into a new cache folder for workload, untimed, as it is while the
# editor has the document open; answers the folder.
document_open() {
  local cache=$WORK/cache/$1
  rm -rf "$cache"
  mkdir -p "$cache"
  SONVALE_CACHE_DIR=$cache "$BENCH/sonvale_open" "$2" > /dev/null || die "could not open $2 into $cache"
  echo "$cache"
}

# How a workload's Sonvale side ran, where there is a choice; noted under the table.
declare -A VIA=()

# True when the command's edit verb runs these commands and saves in the
# layout; tried once on a second of audio, the answer kept.
declare -A EDIT_WORKS=()
can_edit() {
  local commands=$1 layout=$2 key="$1|$2"
  if [[ -z ${EDIT_WORKS[$key]:-} ]]; then
    local probe=$WORK/probe
    rm -rf "$probe"
    mkdir -p "$probe"
    EDIT_WORKS[$key]=no
    if [[ -x $SONVALE ]] && sox -n -r 44100 -c 2 -b 16 "$probe/in.wav" synth 1 pinknoise vol 0.5 &&
      SONVALE_CACHE_DIR=$probe/cache "$SONVALE" edit "$probe/in.wav" -e "$commands" -o "$probe/out.wav" \
        --to "$layout" > /dev/null 2>&1 && [[ -s $probe/out.wav ]]; then
      EDIT_WORKS[$key]=yes
    fi
    rm -rf "$probe"
  fi
  [[ ${EDIT_WORKS[$key]} == yes ]]
}

# Opens a file of any format into the cache, or answers that it cannot yet.
open_any() {
  local workload=$1 round=$2 file=$3
  if [[ -x $BENCH/sonvale_open_any ]]; then
    timed "$workload" sonvale "$round" env SONVALE_CACHE_DIR="$(out "$workload" sonvale)" "$BENCH/sonvale_open_any" "$file"
  else
    not_yet "$workload" sonvale "$round"
  fi
}

# ---- workloads ------------------------------------------------------------
# Each workload is one function that runs one round: the Sonvale side first,
# then its anchors. It states its title, its anchors and their targets (the
# most Sonvale may take as a multiple of the anchor's time) in the lines that
# start with "#:", which the table reads. To switch a side to the command once
# it has the verb, change only its line here.

out() { echo "$WORK/out/$1/$2"; }

#: open16 | open ${MINUTES} min 16-bit WAVE into the cache | sox 0.6 | cp 3.5
wl_open16() {
  local r=$1
  timed open16 sonvale "$r" env SONVALE_CACHE_DIR="$(out open16 sonvale)" "$BENCH/sonvale_open" "$IN16"
  timed open16 sox "$r" sox "$IN16" -t f32 "$(out open16 sox)/out.raw"
  timed open16 cp "$r" cp "$IN16" "$(out open16 cp)/out.wav"
}

#: open24 | open ${MINUTES} min 24-bit WAVE into the cache | sox 0.6 | cp 3.5
wl_open24() {
  local r=$1
  timed open24 sonvale "$r" env SONVALE_CACHE_DIR="$(out open24 sonvale)" "$BENCH/sonvale_open" "$IN24"
  timed open24 sox "$r" sox "$IN24" -t f32 "$(out open24 sox)/out.raw"
  timed open24 cp "$r" cp "$IN24" "$(out open24 cp)/out.wav"
}

#: reopen | reopen the untouched ${MINUTES} min 16-bit WAVE | first-open 0.01
wl_reopen() {
  local r=$1 cache
  cache=$(out reopen first-open)
  KEEP_OUTPUT=1 timed reopen first-open "$r" env SONVALE_CACHE_DIR="$cache" "$BENCH/sonvale_open" "$IN16"
  KEEP=1 EXPECT=reused timed reopen sonvale "$r" env SONVALE_CACHE_DIR="$cache" "$BENCH/sonvale_open" --reuse "$IN16"
}

#: save16 | save ${MINUTES} min float as 16-bit WAVE with dither | sox 0.5
wl_save16() {
  local r=$1
  timed save16 sonvale "$r" "$SONVALE" convert "$INF" "$(out save16 sonvale)/out.wav" --to pcm16 --dither
  timed save16 sox "$r" sox "$INF" -b 16 "$(out save16 sox)/out.wav"
}

#: echo | echo over ${MINUTES} min of an open document, saved as float | sox 0.5
wl_echo() {
  local r=$1 result cache
  result=$(out echo sonvale)/out.wav
  if can_edit "$ECHO_COMMAND" float; then
    cache=$(document_open echo "$IN16")
    timed echo sonvale "$r" env SONVALE_CACHE_DIR="$cache" "$SONVALE" edit "$IN16" -e "$ECHO_COMMAND" \
      -o "$result" --to float
    rm -rf "$cache"
    VIA[echo]="sonvale edit on a file already in the cache (echo into a new item, save)"
  else
    timed echo sonvale "$r" "$BENCH/sonvale_echo" "$IN16" "$result" 30 1000
    VIA[echo]="bench/sonvale_echo (WAVE reader, echo, float writer; no cache)"
  fi
  timed echo sox "$r" sox "$IN16" -e floating-point -b 32 "$(out echo sox)/out.wav" echo 0.8 0.9 1000 0.3
}

#: echo_cold | echo over ${MINUTES} min from the file, saved as float | sox 0.5
wl_echo_cold() {
  local r=$1
  if can_edit "$ECHO_COMMAND" float; then
    timed echo_cold sonvale "$r" env SONVALE_CACHE_DIR="$(out echo_cold sonvale)/cache" "$SONVALE" edit "$IN16" \
      -e "$ECHO_COMMAND" -o "$(out echo_cold sonvale)/out.wav" --to float
    VIA[echo_cold]="sonvale edit with an empty cache (open, echo into a new item, save)"
  else
    not_yet echo_cold sonvale "$r"
  fi
  timed echo_cold sox "$r" sox "$IN16" -e floating-point -b 32 "$(out echo_cold sox)/out.wav" echo 0.8 0.9 1000 0.3
}

#: reverse | reverse ${SHORT_MINUTES} min of an open document, saved | sox 1.0
wl_reverse() {
  local r=$1 cache
  if can_edit "$REVERSE_COMMAND" pcm16; then
    cache=$(document_open reverse "$INS")
    timed reverse sonvale "$r" env SONVALE_CACHE_DIR="$cache" "$SONVALE" edit "$INS" -e "$REVERSE_COMMAND" \
      -o "$(out reverse sonvale)/out.wav" --to pcm16
    rm -rf "$cache"
    VIA[reverse]="sonvale edit on a file already in the cache (reverse into a new item, save)"
  else
    not_yet reverse sonvale "$r"
  fi
  timed reverse sox "$r" sox "$INS" "$(out reverse sox)/out.wav" reverse
}

#: reverse_cold | reverse ${SHORT_MINUTES} min from the file, saved | sox 1.0
wl_reverse_cold() {
  local r=$1
  if can_edit "$REVERSE_COMMAND" pcm16; then
    timed reverse_cold sonvale "$r" env SONVALE_CACHE_DIR="$(out reverse_cold sonvale)/cache" "$SONVALE" edit "$INS" \
      -e "$REVERSE_COMMAND" -o "$(out reverse_cold sonvale)/out.wav" --to pcm16
    VIA[reverse_cold]="sonvale edit with an empty cache (open, reverse into a new item, save)"
  else
    not_yet reverse_cold sonvale "$r"
  fi
  timed reverse_cold sox "$r" sox "$INS" "$(out reverse_cold sox)/out.wav" reverse
}

#: mp3 | open ${SHORT_MINUTES} min MP3 into the cache | ffmpeg 1.1
wl_mp3() {
  local r=$1
  open_any mp3 "$r" "$INMP3"
  timed mp3 ffmpeg "$r" ffmpeg -nostdin -loglevel error -y -i "$INMP3" -f f32le "$(out mp3 ffmpeg)/out.raw"
}

#: flac | open ${SHORT_MINUTES} min FLAC into the cache | ffmpeg 1.1
wl_flac() {
  local r=$1
  open_any flac "$r" "$INFLAC"
  timed flac ffmpeg "$r" ffmpeg -nostdin -loglevel error -y -i "$INFLAC" -f f32le "$(out flac ffmpeg)/out.raw"
}

# One of the effects over the short input of an open document, saved as float,
# and sox's nearest effect over the same file, also to float.
fx_workload() {
  local workload=$1 r=$2 cache
  if can_edit "${FX_COMMAND[$workload]}" float; then
    cache=$(document_open "$workload" "$INS")
    timed "$workload" sonvale "$r" env SONVALE_CACHE_DIR="$cache" "$SONVALE" edit "$INS" \
      -e "${FX_COMMAND[$workload]}" -o "$(out "$workload" sonvale)/out.wav" --to float
    rm -rf "$cache"
    VIA[$workload]="sonvale edit on a file already in the cache: ${FX_COMMAND[$workload]}"
  else
    not_yet "$workload" sonvale "$r"
  fi
  # shellcheck disable=SC2086 # the effect's words
  timed "$workload" sox "$r" sox "$INS" -e floating-point -b 32 "$(out "$workload" sox)/out.wav" ${FX_SOX[$workload]}
}

#: kompressor | compressor, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_kompressor() { fx_workload kompressor "$1"; }
#: hochpass | high-pass, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_hochpass() { fx_workload hochpass "$1"; }
#: tiefpass | low-pass, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_tiefpass() { fx_workload tiefpass "$1"; }
#: parametrischereq | bell EQ, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_parametrischereq() { fx_workload parametrischereq "$1"; }
#: normalize | normalise (2 passes), ${SHORT_MINUTES} min open doc, to float | sox 1.0
wl_normalize() { fx_workload normalize "$1"; }
#: chor | chorus (2 voices), ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_chor() { fx_workload chor "$1"; }
#: flanger | flanger, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_flanger() { fx_workload flanger "$1"; }
#: hall | reverb, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_hall() { fx_workload hall "$1"; }
#: tremolo | tremolo, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_tremolo() { fx_workload tremolo "$1"; }
#: phaser | phaser, ${SHORT_MINUTES} min open document, to float | sox 1.0
wl_phaser() { fx_workload phaser "$1"; }
#: verzerrung | distortion (8x oversampled), ${SHORT_MINUTES} min open doc, to float | sox 1.0
wl_verzerrung() { fx_workload verzerrung "$1"; }

# Runs the command STARTS times in a row, its output dropped: for the start workloads.
starts() {
  local i
  for ((i = 0; i < STARTS; i++)); do "$@" > /dev/null || return; done
}
export -f starts
export STARTS

# The start workloads have an absolute target: their "ms" anchor is the most
# milliseconds one start may take.

#: start_help | start of sonvale --help, ms per start | ms 5
wl_start_help() {
  PER=$STARTS timed start_help sonvale "$1" bash -c 'starts "$@"' starts "$SONVALE" --help
}

#: start_info | start of sonvale info on a 1 s WAVE, ms per start | ms 15
wl_start_info() {
  PER=$STARTS timed start_info sonvale "$1" bash -c 'starts "$@"' starts "$SONVALE" info "$INSEC"
}

# The "#:" line of a workload, with the lengths filled in.
workload_line() {
  local line
  line=$(grep "^#: $1 |" "${BASH_SOURCE[0]}") || die "unknown workload $1"
  line=${line#\#: }
  line=${line//'${MINUTES}'/$MINUTES}
  echo "${line//'${SHORT_MINUTES}'/$SHORT_MINUTES}"
}

# ---- table ----------------------------------------------------------------

# Median of the numbers on standard input.
median() { sort -g | awk '{ v[NR] = $1 } END { if (NR == 0) print "nan"; else if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# Field of the results of one side: 4 seconds, 5 peak KiB; rounds that ran well only.
column_of() { awk -v w="$1" -v s="$2" -v f="$3" '$1 == w && $2 == s && $6 == "ok" { print $f }' <<< "$RESULTS"; }
state_of() {
  awk -v w="$1" -v s="$2" '$1 == w && $2 == s { print $6 }' <<< "$RESULTS" | sort | uniq -c | sort -rn |
    awk 'NR == 1 { print $2 }'
}

# Per round Sonvale's time over the anchor's, where both ran: wall time, or
# with a third argument 7 user CPU time.
ratios() {
  awk -v w="$1" -v a="$2" -v f="${3:-4}" '$1 == w && $6 == "ok" && $2 == "sonvale" { s[$3] = $f }
                           $1 == w && $6 == "ok" && $2 == a { t[$3] = $f }
                           END { for (r in s) if ((r in t) && t[r] > 0) print s[r] / t[r] }' <<< "$RESULTS"
}

FAILURES=0
MEMORY_WORST=0

table() {
  echo
  echo "Sonvale against its anchors: long inputs ${MINUTES} min, short ${SHORT_MINUTES} min, ${RUNS} rounds;"
  echo "medians of wall time and of the per-round ratios (Sonvale / anchor)."
  echo
  printf '%-54s %-11s %9s %9s %8s %9s  %s\n' workload side "median s" "peak MiB" ratio target result
  local workload
  for workload in "${SELECTED[@]}"; do
    local line title
    line=$(workload_line "$workload")
    IFS='|' read -r -a parts <<< "$line"
    title=$(echo "${parts[1]}" | sed 's/^ *//; s/ *$//')
    # Sonvale's row.
    local state secs kib mib memory
    state=$(state_of "$workload" sonvale)
    if [[ $state == ok ]]; then
      secs=$(column_of "$workload" sonvale 4 | median)
      kib=$(column_of "$workload" sonvale 5 | sort -g | tail -1)
      mib=$(awk -v k="$kib" 'BEGIN { printf "%.1f", k / 1024 }')
      MEMORY_WORST=$(awk -v a="$MEMORY_WORST" -v b="$mib" 'BEGIN { print (b > a) ? b : a }')
      if awk -v m="$mib" -v l="$MEMORY_LIMIT_MIB" 'BEGIN { exit !(m <= l) }'; then
        memory="memory PASS (<= ${MEMORY_LIMIT_MIB} MiB)"
      else
        memory="memory FAIL ($(awk -v m="$mib" -v l="$MEMORY_LIMIT_MIB" 'BEGIN { printf "%.1f MiB over", m - l }'))"
        FAILURES=$((FAILURES + 1))
      fi
      printf '%-54s %-11s %9.3f %9s %8s %9s  %s\n' "$title" sonvale "$secs" "$mib" "" "" "$memory"
    else
      printf '%-54s %-11s %9s %9s %8s %9s  %s\n' "$title" sonvale - - "" "" "$(describe_state "$state")"
    fi
    # One row per anchor.
    local i
    for ((i = 2; i < ${#parts[@]}; i++)); do
      local anchor limit
      read -r anchor limit <<< "${parts[i]}"
      local astate asecs akib amib ratio verdict
      if [[ $anchor == ms ]]; then
        if [[ $state == ok ]]; then
          ratio=$(awk -v s="$secs" 'BEGIN { printf "%.2f", s * 1000 }')
          verdict=$(awk -v m="$ratio" -v l="$limit" 'BEGIN {
            if (m <= l) printf "PASS (%.0f%% of the limit)", 100 * m / l;
            else printf "FAIL (%.0f%% over)", 100 * (m - l) / l }')
          [[ $verdict == FAIL* ]] && FAILURES=$((FAILURES + 1))
        else
          ratio=-; verdict=$(describe_state "$state")
        fi
        printf '%-54s %-11s %9s %9s %8s %9s  %s\n' "" "per start" - - "${ratio}ms" "<= ${limit}ms" "$verdict"
        continue
      fi
      astate=$(state_of "$workload" "$anchor")
      if [[ $astate == ok ]]; then
        asecs=$(printf '%9.3f' "$(column_of "$workload" "$anchor" 4 | median)")
        akib=$(column_of "$workload" "$anchor" 5 | sort -g | tail -1)
        amib=$(awk -v k="$akib" 'BEGIN { printf "%.1f", k / 1024 }')
      else
        asecs=-; amib=-
      fi
      if [[ $state == ok && $astate == ok ]]; then
        ratio=$(ratios "$workload" "$anchor" | median)
        verdict=$(awk -v r="$ratio" -v l="$limit" 'BEGIN {
          if (r <= l) printf "PASS (%.0f%% of the limit)", 100 * r / l;
          else printf "FAIL (by %.3gx, %.0f%% over; needs %.2fx faster)", r - l, 100 * (r - l) / l, r / l }')
        [[ $verdict == FAIL* ]] && FAILURES=$((FAILURES + 1))
        # The user CPU time's ratio too, which load from other work on the machine disturbs less.
        verdict+=$(ratios "$workload" "$anchor" 7 | median | awk '$1 != "nan" { printf "; user CPU %.3fx", $1 }')
        ratio=$(awk -v r="$ratio" 'BEGIN { printf "%.3fx", r }')
      elif [[ $state != ok ]]; then
        ratio=-; verdict=$(describe_state "$state")
      else
        ratio=-; verdict="anchor $(describe_state "$astate")"
      fi
      printf '%-54s %-11s %9s %9s %8s %9s  %s\n' "" "$anchor" "$asecs" "$amib" "$ratio" "<= ${limit}x" "$verdict"
    done
  done
  echo
  for workload in "${SELECTED[@]}"; do
    [[ -n ${VIA[$workload]:-} ]] && echo "$workload: Sonvale side ran as ${VIA[$workload]}"
  done
  if [[ $MEMORY_WORST != 0 ]]; then
    printf 'Peak memory of any Sonvale workload: %s MiB (target <= %d MiB whatever the length)\n' \
      "$MEMORY_WORST" "$MEMORY_LIMIT_MIB"
  fi
}

describe_state() {
  case $1 in
    na) echo "n/a yet" ;;
    failed) echo "failed (see messages above)" ;;
    unexpected) echo "FAIL (unexpected output, see above)" ;;
    missing) echo "program missing (not built or not installed)" ;;
    *) echo "not run" ;;
  esac
}

# ---- main -----------------------------------------------------------------

if [[ ${1:-} == --list ]]; then
  for w in "${WORKLOADS[@]}"; do workload_line "$w"; done
  exit 0
fi
SELECTED=("$@")
(( ${#SELECTED[@]} )) || SELECTED=("${WORKLOADS[@]}")
for w in "${SELECTED[@]}"; do workload_line "$w" > /dev/null; done
have ffmpeg || echo "run.sh: ffmpeg is missing, so the MP3 and FLAC comparisons are left out (apt-get install ffmpeg)" >&2

build
mkdir -p "$WORK"
inputs

if [[ $MICRO == 1 ]]; then
  echo "== micro-benchmarks"
  "$BENCH/sonvale_bench" --benchmark_min_time=0.5
fi

echo "== workloads, ${RUNS} rounds"
for ((round = 1; round <= RUNS; round++)); do
  for w in "${SELECTED[@]}"; do "wl_$w" "$round"; done
done
rm -rf "$WORK/out" "$WORK/cache"

table
(( FAILURES == 0 )) || echo "$FAILURES target(s) missed."

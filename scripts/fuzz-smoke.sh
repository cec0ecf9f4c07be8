#!/usr/bin/env bash
# Builds the fuzz targets (clang with AddressSanitizer and UndefinedBehaviorSanitizer),
# makes their seed corpora and runs every target for a short while, as many at
# once as there are cores. Fails when a target finds a crash, a leak or a broken
# check; the input that did it is kept in the build folder's fuzz-artifacts/.
#
#   FUZZ_SECONDS            seconds per target (default 30)
#   SONVALE_FUZZ_BUILD_DIR  build folder (default build-fuzz)
#   FUZZ_TARGETS            targets to run (default every fuzz_* program built)
#
# A build folder already configured with the fuzz targets (the sanitizer run's, in
# CI) is built as it is, tests and all, rather than configured anew.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="${SONVALE_FUZZ_BUILD_DIR:-$root/build-fuzz}"
seconds="${FUZZ_SECONDS:-30}"
jobs="$(nproc)"

if ! grep -qs '^SONVALE_FUZZ:BOOL=ON$' "$dir/CMakeCache.txt"; then
  CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSONVALE_FUZZ=ON \
    -DSONVALE_TESTS=OFF -DSONVALE_SANITIZE=address,undefined >/dev/null
fi
ninja -C "$dir" -j"$jobs" sonvale_fuzzers
"$root/fuzz/make-seeds.sh" "$dir" "$dir/fuzz-seeds"

if [[ -n "${FUZZ_TARGETS:-}" ]]; then
  read -r -a targets <<<"$FUZZ_TARGETS"
else
  mapfile -t targets < <(find "$dir/fuzz" -maxdepth 1 -type f -perm -u+x -name 'fuzz_*' ! -name fuzz_seed_writer \
    -printf '%f\n' | sort)
fi
mkdir -p "$dir/fuzz-artifacts" "$dir/fuzz-logs"

run_one() {
  local target="$1" dir="$2" seconds="$3" root="$4"
  local corpus="$dir/fuzz-corpus/$target" seeds="$dir/fuzz-seeds/$target" log="$dir/fuzz-logs/$target.log"
  local dict="$root/fuzz/dictionaries/$target.dict" options=()
  mkdir -p "$corpus" "$seeds"
  [[ -f "$dict" ]] && options+=("-dict=$dict")
  if "$dir/fuzz/$target" "${options[@]}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$dir/fuzz-artifacts/$target-" "$corpus" "$seeds" >"$log" 2>&1; then
    echo "$target: ok, $(grep -m1 'stat::number_of_executed_units' "$log" | awk '{print $2}') runs," \
      "$(find "$corpus" -type f | wc -l) inputs in the corpus"
  else
    echo "$target: FAILED, see $log"
    grep -E 'ERROR|fuzz check failed|SUMMARY|Test unit written' "$log" | head -n 8
    return 1
  fi
}
export -f run_one

start=$SECONDS
if printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {} "$dir" "$seconds" "$root"; then
  echo "fuzz smoke run: ${#targets[@]} targets, ${seconds} s each, $((SECONDS - start)) s in all: no findings"
else
  echo "fuzz smoke run: a target found a fault (inputs in $dir/fuzz-artifacts/)"
  exit 1
fi

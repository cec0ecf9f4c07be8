#!/usr/bin/env bash
# Runs the whole test suite built with AddressSanitizer and UndefinedBehaviorSanitizer,
# then the tests that use threads or several processes built with ThreadSanitizer.
# Any report fails the run.
#
#   SONVALE_ASAN_BUILD_DIR  build folder of the first run (default build-asan)
#   SONVALE_TSAN_BUILD_DIR  build folder of the second (default build-tsan)
#   SANITIZERS              "address" or "thread" to run only one of the two
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
asan="${SONVALE_ASAN_BUILD_DIR:-$root/build-asan}"
tsan="${SONVALE_TSAN_BUILD_DIR:-$root/build-tsan}"
which="${SANITIZERS:-address thread}"
jobs="$(nproc)"

configure() {
  cmake -S "$root" -B "$1" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSONVALE_SANITIZE="$2" >/dev/null
}

# Reports stop the test that made them; leaks are reported when a test program ends.
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:halt_on_error=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1"

if [[ " $which " == *" address "* ]]; then
  start=$SECONDS
  # float-cast-overflow is part of clang's "undefined" but not of GCC's.
  configure "$asan" "address,undefined,float-cast-overflow"
  ninja -C "$asan" -j"$jobs"
  (cd "$asan" && ctest --output-on-failure -j"$jobs" --timeout 900)
  echo "address and undefined behaviour: whole suite in $((SECONDS - start)) s"
fi

if [[ " $which " == *" thread "* ]]; then
  start=$SECONDS
  # The tests that start threads or processes, found by what their files call;
  # a test program runs the suites of those files only.
  declare -A suites=()
  while IFS= read -r file; do
    layer="$(basename "$(dirname "$file")")"
    for suite in $(grep -ohE '^TEST(_F|_P)?\(\s*[A-Za-z0-9_]+' "$file" | sed -E 's/^TEST(_F|_P)?\(\s*//' | sort -u); do
      suites[$layer]+="${suites[$layer]:+:}$suite.*:*/$suite.*"
    done
  done < <(grep -lE 'std::(thread|jthread|async)|pthread_create|fork\(' "$root"/tests/*/*_test.cpp | sort)
  if ((${#suites[@]} == 0)); then
    echo "no test uses threads or processes"
    exit 0
  fi
  configure "$tsan" "thread"
  programs=()
  for layer in "${!suites[@]}"; do programs+=("${layer}_tests"); done
  ninja -C "$tsan" -j"$jobs" "${programs[@]}"
  # ThreadSanitizer needs the low address range that high ASLR entropy may take.
  norandom=()
  if setarch "$(uname -m)" -R true 2>/dev/null; then norandom=(setarch "$(uname -m)" -R); fi
  failed=0
  for layer in $(printf '%s\n' "${!suites[@]}" | sort); do
    echo "thread: ${layer}_tests --gtest_filter=${suites[$layer]}"
    (cd "$tsan/tests" && "${norandom[@]}" "./${layer}_tests" --gtest_filter="${suites[$layer]}" --gtest_brief=1) ||
      failed=1
  done
  ((failed == 0)) || { echo "thread sanitizer: failures above"; exit 1; }
  echo "threads and processes: $((SECONDS - start)) s"
fi

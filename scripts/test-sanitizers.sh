#!/usr/bin/env bash
# Runs the whole test suite built with AddressSanitizer and UndefinedBehaviorSanitizer,
# then the tests that start threads or processes built with ThreadSanitizer. Any
# report or failing test fails the run; both halves run either way.
#
#   SONVALE_ASAN_BUILD_DIR  build folder of the first half (default build-asan)
#   SONVALE_TSAN_BUILD_DIR  build folder of the second (default build-tsan)
#   SANITIZERS              "address" or "thread" to run one half only
#   TSAN_WHOLE_LAYERS       test layers run whole in the second half (default "audio":
#                           its players and recorders start threads inside the library)
#   TSAN_SKIP_LAYERS        test layers left out of the second half (default "cli gui":
#                           the command's tests run the built program as a child, and
#                           the whole program under ThreadSanitizer would double the
#                           time; the window's tests run in the first half, on the
#                           offscreen platform, and Qt itself is not built for
#                           ThreadSanitizer)
#   SANITIZE_WITH_FUZZERS   1: build the first half with clang and the fuzz targets in
#                           the same folder, so scripts/fuzz-smoke.sh can run them
#                           without building the libraries a third time (what CI does)
set -uo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
asan="${SONVALE_ASAN_BUILD_DIR:-$root/build-asan}"
tsan="${SONVALE_TSAN_BUILD_DIR:-$root/build-tsan}"
which="${SANITIZERS:-address thread}"
skip=" ${TSAN_SKIP_LAYERS-cli gui} "
whole=" ${TSAN_WHOLE_LAYERS-audio} "
jobs="$(nproc)"
failed=()

# -O1 and line tables only: sanitizer builds compile much faster and still name every line.
configure() {
  local dir="$1" sanitize="$2"
  shift 2
  cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" \
    -DSONVALE_SANITIZE="$sanitize" "$@" >/dev/null
}

# A report ends the test program that made it; leaks are reported as a program ends.
export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1"

if [[ " $which " == *" address "* ]]; then
  start=$SECONDS
  # float-cast-overflow is part of clang's "undefined" but not of GCC's.
  extra=()
  if [[ "${SANITIZE_WITH_FUZZERS:-0}" == 1 ]]; then
    extra=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DSONVALE_FUZZ=ON)
  fi
  if configure "$asan" "address,undefined,float-cast-overflow" "${extra[@]}" && ninja -C "$asan" -j"$jobs"; then
    (cd "$asan" && ctest --output-on-failure -j"$jobs" --timeout 900) || failed+=("address and undefined: tests")
  else
    failed+=("address and undefined: build")
  fi
  echo "address and undefined behaviour, whole suite: $((SECONDS - start)) s"
fi

if [[ " $which " == *" thread "* ]]; then
  start=$SECONDS
  # The tests that start threads or processes, found by what their files call;
  # each test program runs the suites of those files only.
  declare -A suites=()
  for layer in $whole; do suites[$layer]="*"; done
  while IFS= read -r file; do
    layer="$(basename "$(dirname "$file")")"
    [[ "$whole" == *" $layer "* ]] && continue
    if [[ "$skip" == *" $layer "* ]]; then
      echo "thread: leaving out $file (layer $layer)"
      continue
    fi
    for suite in $(grep -ohE '^TEST(_F|_P)?\(\s*[A-Za-z0-9_]+' "$file" | sed -E 's/^TEST(_F|_P)?\(\s*//' | sort -u); do
      [[ ":${suites[$layer]:-}:" == *":$suite.*:"* ]] && continue
      suites[$layer]+="${suites[$layer]:+:}$suite.*:*/$suite.*"
    done
  done < <(grep -lE 'std::(thread|jthread|async)|pthread_create|fork\(|RunWithFileSizeLimit|ReportingChild' \
    "$root"/tests/*/*_test.cpp | sort)
  programs=()
  for layer in "${!suites[@]}"; do programs+=("${layer}_tests"); done
  if ((${#programs[@]} == 0)); then
    echo "thread: no test starts threads or processes"
  elif configure "$tsan" "thread" && ninja -C "$tsan" -j"$jobs" "${programs[@]}"; then
    # ThreadSanitizer needs address ranges that a high ASLR entropy may take.
    norandom=()
    if setarch "$(uname -m)" -R true 2>/dev/null; then norandom=(setarch "$(uname -m)" -R); fi
    for layer in $(printf '%s\n' "${!suites[@]}" | sort); do
      echo "thread: ${layer}_tests --gtest_filter=${suites[$layer]}"
      (cd "$tsan/tests" && "${norandom[@]}" "./${layer}_tests" --gtest_filter="${suites[$layer]}" --gtest_brief=1) ||
        failed+=("thread: ${layer}_tests")
    done
  else
    failed+=("thread: build")
  fi
  echo "threads and processes: $((SECONDS - start)) s"
fi

if ((${#failed[@]} > 0)); then
  printf 'sanitizer run failed: %s\n' "${failed[@]}"
  exit 1
fi
echo "sanitizer run: no reports, every test passed"

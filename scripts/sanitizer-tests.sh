#!/usr/bin/env bash
# Builds the tests with sanitizers in a folder of their own and runs them:
#   scripts/sanitizer-tests.sh address,undefined build-asan [GTEST_FILTER]
#   scripts/sanitizer-tests.sh thread build-tsan [GTEST_FILTER]
# The end-to-end tests start the app in the background, whose standard error goes nowhere:
# every process writes its findings to files in BUILD/sanitizer-logs instead, and any file
# there fails the run.
set -euo pipefail
sanitizers=$1 build=$2 filter=${3:-*}
jobs=${JOBS:-2}

cmake -S . -B "$build" -DTARNWICK_SANITIZE="$sanitizers" ${CMAKE_FLAGS:-} >/dev/null
cmake --build "$build" -j"$jobs" --target tarnwick_tests

logs=$PWD/$build/sanitizer-logs
rm -rf "$logs"
mkdir -p "$logs"
export ASAN_OPTIONS="log_path=$logs/asan:detect_leaks=1:abort_on_error=0"
export UBSAN_OPTIONS="log_path=$logs/ubsan:print_stacktrace=1:halt_on_error=1"
export TSAN_OPTIONS="log_path=$logs/tsan:halt_on_error=1:second_deadlock_stack=1"
status=0
(cd "$build" && ./tarnwick_tests --gtest_brief=1 --gtest_filter="$filter") || status=$?
if compgen -G "$logs/*" >/dev/null; then
  echo "sanitizer-tests: findings under $sanitizers:" >&2
  cat "$logs"/* >&2
  exit 1
fi
exit "$status"

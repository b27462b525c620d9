#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize, builds with AddressSanitizer and
# UndefinedBehaviorSanitizer in a separate folder and runs the tests there.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh --tests

build=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [[ "${1:-}" == "--sanitize" ]]; then
  build=build-sanitize
  flags=(-DCMAKE_BUILD_TYPE=Debug -DBRENMOOR_SANITIZE=ON -DBRENMOOR_BUILD_BENCH=OFF)
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fi

cmake -S . -B "$build" "${flags[@]}"
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 180

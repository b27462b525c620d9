#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz and runs one (or, with --all, each in
# turn) for SECONDS on a copy of its seed corpus in fuzz/corpus/. What the fuzzer finds stays in
# a temporary folder, so the repository's corpus is never written; a crash input is copied to
# build-fuzz/crashes/ and the script exits non-zero.
#   scripts/fuzz.sh TARGET SECONDS [libFuzzer options...]
#   scripts/fuzz.sh --all SECONDS
set -euo pipefail
cd "$(dirname "$0")/.."

targets=(fuzz_answer fuzz_forms fuzz_sandbox_request fuzz_sandbox_descriptor fuzz_upload_url)
if (($# < 2)); then
  echo "usage: scripts/fuzz.sh TARGET|--all SECONDS [libFuzzer options...]" >&2
  echo "targets: ${targets[*]}" >&2
  exit 2
fi
target=$1
seconds=$2
shift 2
if [[ "$target" == --all ]]; then
  run=("${targets[@]}")
else
  [[ " ${targets[*]} " == *" $target "* ]] || { echo "unknown target: $target" >&2; exit 2; }
  run=("$target")
fi

bash scripts/install-deps.sh --fuzz

build=build-fuzz
cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++-14 \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBRENMOOR_FUZZ=ON -DBRENMOOR_BUILD_TESTS=OFF \
  -DBRENMOOR_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${run[@]}"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for t in "${run[@]}"; do
  mkdir -p "$work/$t" "$build/crashes"
  cp -r "fuzz/corpus/$t/." "$work/$t/" 2>/dev/null || true
  case "$t" in
    fuzz_answer | fuzz_sandbox_request) dict=(-dict=fuzz/soap.dict) ;;
    fuzz_forms | fuzz_sandbox_descriptor) dict=(-dict=fuzz/forms.dict) ;;
    *) dict=() ;;
  esac
  echo "== $t for ${seconds}s"
  # One process, bounded in time, memory and time per input; -print_final_stats gives the
  # executions reached.
  if ! "$build/fuzz/$t" "$work/$t" "${dict[@]}" -max_total_time="$seconds" \
    -rss_limit_mb=2048 -timeout=10 -max_len=65536 -print_final_stats=1 \
    -artifact_prefix="$build/crashes/$t-" "$@" 2>"$work/$t.log"; then
    grep -v '^#' "$work/$t.log" | tail -60 >&2
    echo "$t: crash, input in $build/crashes/" >&2
    status=1
  fi
  grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb)' \
    "$work/$t.log" || true
done
exit "$status"

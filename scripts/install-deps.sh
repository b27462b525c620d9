#!/usr/bin/env bash
# Installs the Debian packages Brenmoor builds with; with --tests, also what only the tests use
# (a headless browser that visits the sandbox's pages); with --fuzz, clang and its libFuzzer
# runtime for scripts/fuzz.sh. Safe to run again.
set -euo pipefail

packages=(
  cmake g++ make pkg-config
  libcurl4-openssl-dev libexpat1-dev libpugixml-dev libcpp-httplib-dev libsqlite3-dev
  libgtest-dev libgmock-dev libcli11-dev libssl-dev libbenchmark-dev
  nlohmann-json3-dev zlib1g-dev help2man
)
# The TLS tests expect a system certificate store to refuse an authority it does not hold.
[[ "${1:-}" == "--tests" ]] && packages+=(chromium python3-zeep ca-certificates)
[[ "${1:-}" == "--fuzz" ]] && packages+=(clang-14 libclang-rt-14-dev)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y "${missing[@]}"
fi

#!/usr/bin/env bash
# The main job: builds Brenmoor, starts the Telvane sandbox on a free loopback port with a
# temporary data folder, tours the command-line tool against it, and stops the sandbox.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" --target telvane-sandbox brenmoor-cli

data=$(mktemp -d)
log="$data/sandbox.out"
./build/sandbox/telvane-sandbox --port 0 --data "$data/db" --log >"$log" 2>"$data/sandbox.log" &
sandbox=$!
trap 'kill $sandbox 2>/dev/null || true; wait $sandbox 2>/dev/null || true; rm -rf "$data"' EXIT

url=""
for _ in $(seq 100); do
  url=$(sed -n 's/^listening on //p' "$log")
  [[ -n "$url" ]] && break
  sleep 0.1
done
[[ -n "$url" ]] || { echo "the sandbox did not start" >&2; cat "$data/sandbox.log" >&2; exit 1; }

cli() {
  echo "\$ brenmoor $*"
  ./build/tools/brenmoor --url "$url" "$@"
  echo
}

echo "Telvane sandbox at $url"
echo
cli ping
cli guid
cli compatible
cli --user demo@example.com --password demo accounts
cli --user demo@example.com --password demo --account 1001 login
cli --user demo@example.com --password demo connect
echo "\$ BRENMOOR_PASSWORD=demo brenmoor --trace --user demo@example.com accounts   (secrets masked)"
BRENMOOR_PASSWORD=demo ./build/tools/brenmoor --url "$url" --trace --user demo@example.com accounts 2>&1
echo

as_demo=(--user demo@example.com --password demo --account 1001)
cli "${as_demo[@]}" templates list
cli "${as_demo[@]}" themes list
cli "${as_demo[@]}" --json themes list
cli "${as_demo[@]}" records show --theme theme-classroom
echo "\$ brenmoor ${as_demo[*]} projects create Launch --description 'Spring launch'"
project=$(./build/tools/brenmoor --url "$url" "${as_demo[@]}" projects create Launch --description "Spring launch")
echo "$project"
echo
cli "${as_demo[@]}" templates copy tpl-video-player "$project" "Keynote video"
cli "${as_demo[@]}" themes apply theme-classroom "$project"
cli "${as_demo[@]}" templates list --project "$project"
cli "${as_demo[@]}" projects clear "$project"
cli "${as_demo[@]}" projects list
cli "${as_demo[@]}" projects delete "$project"
echo "\$ brenmoor ${as_demo[*]} --max-answer-bytes 2000 templates list   (refused on purpose)"
./build/tools/brenmoor --url "$url" "${as_demo[@]}" --max-answer-bytes 2000 templates list ||
  echo "exit status $?"
echo
echo "\$ brenmoor --user demo@example.com --password wrong accounts   (fails on purpose)"
./build/tools/brenmoor --url "$url" --user demo@example.com --password wrong accounts || echo "exit status $?"
echo
echo "\$ brenmoor --url http://127.0.0.1:1 ping   (nothing listens there: fails on purpose)"
./build/tools/brenmoor --url http://127.0.0.1:1 ping || echo "exit status $?"
echo
echo "Sandbox requests:"
cat "$data/sandbox.log"

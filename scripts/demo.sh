#!/usr/bin/env bash
# The main job: builds Brenmoor, starts the Telvane sandbox on a free loopback port with a
# temporary data folder, tours the command-line tool against it, and stops the sandbox.
# BRENMOOR_BUILD_DIR names the build folder (default: build).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BRENMOOR_BUILD_DIR:-build}

bash scripts/install-deps.sh
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)" --target telvane-sandbox brenmoor-cli

data=$(mktemp -d)
log="$data/sandbox.out"
"$build"/sandbox/telvane-sandbox --port 0 --data "$data/db" --log >"$log" 2>"$data/sandbox.log" &
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
  "$build"/tools/brenmoor --url "$url" "$@"
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
BRENMOOR_PASSWORD=demo "$build"/tools/brenmoor --url "$url" --trace --user demo@example.com accounts 2>&1
echo

as_demo=(--user demo@example.com --password demo --account 1001)
cli "${as_demo[@]}" templates list
cli "${as_demo[@]}" themes list
cli "${as_demo[@]}" --json themes list
cli "${as_demo[@]}" records show --theme theme-classroom
echo "\$ brenmoor ${as_demo[*]} projects create Launch --description 'Spring launch'"
project=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" projects create Launch --description "Spring launch")
echo "$project"
echo
cli "${as_demo[@]}" templates copy tpl-video-player "$project" "Keynote video"
cli "${as_demo[@]}" themes apply theme-classroom "$project"
cli "${as_demo[@]}" templates list --project "$project"
cli "${as_demo[@]}" projects clear "$project"
cli "${as_demo[@]}" projects list
cli "${as_demo[@]}" projects delete "$project"
echo "\$ brenmoor ${as_demo[*]} --max-answer-bytes 2000 templates list   (refused on purpose)"
"$build"/tools/brenmoor --url "$url" "${as_demo[@]}" --max-answer-bytes 2000 templates list ||
  echo "exit status $?"
echo
echo "Assets: a folder, an asset of two generated files, found, previewed and removed"
echo "\$ brenmoor ${as_demo[*]} folders create 'Demo talks'"
folder=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" folders create "Demo talks")
echo "$folder"
echo
head -c 300000 /dev/urandom >"$data/keynote.mp4"
head -c 40000 /dev/urandom >"$data/keynote-low.mp4"
echo "\$ brenmoor ${as_demo[*]} assets upload keynote.mp4 keynote-low.mp4 --name Keynote --folder $folder --description 'Spring keynote'"
echo "  (standard error is not a terminal here, so the progress comes as plain lines)"
asset=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" assets upload "$data/keynote.mp4" \
  "$data/keynote-low.mp4" --name Keynote --folder "$folder" --description "Spring keynote" \
  2>"$data/progress")
cat "$data/progress"
echo "$asset"
echo
cli "${as_demo[@]}" assets list --folder "$folder"
cli "${as_demo[@]}" --json assets search keynote
echo "\$ curl \$(brenmoor ${as_demo[*]} assets preview $asset)"
preview=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" assets preview "$asset")
curl --silent --show-error --fail --noproxy '*' --max-time 10 -o "$data/preview" "$preview"
cmp "$data/preview" "$data/keynote.mp4"
echo "$preview: the $(stat -c %s "$data/preview") bytes of keynote.mp4"
echo
cli "${as_demo[@]}" folders tree
cli "${as_demo[@]}" folders clear "$folder" --async
cli "${as_demo[@]}" folders delete "$folder"

echo "Quotas, registrants and e-mail"
cli "${as_demo[@]}" quota
echo "\$ brenmoor ${as_demo[*]} projects create 'Open day'"
project=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" projects create "Open day")
echo "$project"
echo
cli "${as_demo[@]}" registrants add "$project" ada@example.com --first-name Ada --last-name Lovelace
cli "${as_demo[@]}" registrants list "$project"
cli "${as_demo[@]}" projects delete "$project"
cli "${as_demo[@]}" email send ada@example.com --subject "Open day" --message "See you there."

echo "\$ brenmoor --user demo@example.com --password wrong accounts   (fails on purpose)"
"$build"/tools/brenmoor --url "$url" --user demo@example.com --password wrong accounts || echo "exit status $?"
echo
echo "\$ brenmoor --url http://127.0.0.1:1 ping   (nothing listens there: fails on purpose)"
"$build"/tools/brenmoor --url http://127.0.0.1:1 ping || echo "exit status $?"
echo
echo "Reports: a deployed page visited by three viewers, a vote and a question"
echo "\$ brenmoor ${as_demo[*]} projects create 'Town hall'"
project=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" projects create "Town hall")
echo "$project"
echo
echo "\$ brenmoor ${as_demo[*]} templates copy tpl-audience $project Audience"
page=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" templates copy tpl-audience "$project" Audience)
echo "$page"
echo
echo "\$ brenmoor ${as_demo[*]} records create $project --template $page --name 'Town hall'"
record=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" records create "$project" --template "$page" --name "Town hall")
echo "$record"
echo
echo "\$ brenmoor ${as_demo[*]} records deploy --record $record --template $page"
deployment=$("$build"/tools/brenmoor --url "$url" "${as_demo[@]}" records deploy --record "$record" --template "$page")
echo "$deployment"
echo
live="$url/live/$deployment/"
# Each viewer keeps its own cookie jar, so the page tells them apart.
visit() {
  local jar=$1
  shift
  curl --silent --show-error --fail --noproxy '*' --max-time 10 -b "$data/$jar" -c "$data/$jar" "$@"
}
echo "\$ curl $live   (Ada twice with Firefox, Ben with Chrome, each with a cookie jar; one plain curl)"
ada=(-A "Mozilla/5.0 (X11; Linux x86_64; rv:126.0) Gecko/20100101 Firefox/126.0" -H "Accept-Language: en-GB")
ben=(-A "Mozilla/5.0 (Windows NT 10.0; Win64; x64) Chrome/125.0.0.0 Safari/537.36" -H "Accept-Language: de-DE")
visit ada "${ada[@]}" -o /dev/null "$live"
visit ada "${ada[@]}" -o "$data/page.html" "$live"
field() { grep -o "name=\"$1\" value=\"[^\"]*\"" "$data/page.html" | head -n 1 | cut -d'"' -f4; }
hit=$(field hit)
visit ada "${ada[@]}" -o /dev/null --data "hit=$hit&poll=$(field poll)&answer=1" "${live}poll"
visit ada "${ada[@]}" -o /dev/null --data "hit=$hit&question=Will+the+slides+be+online%3F&name=Ada&location=Leeds" "${live}question"
visit ada "${ada[@]}" -o /dev/null "${live}close?hit=$hit"
visit ben "${ben[@]}" -o /dev/null "$live"
curl --silent --show-error --fail --noproxy '*' --max-time 10 -o /dev/null "$live"
echo
cli "${as_demo[@]}" reports hits "$page"
echo "\$ brenmoor ${as_demo[*]} reports viewers $page --json | head -n 25"
# Through a file: head leaving early would end brenmoor with SIGPIPE, and pipefail the demo.
"$build"/tools/brenmoor --url "$url" "${as_demo[@]}" reports viewers "$page" --json >"$data/viewers.json"
head -n 25 "$data/viewers.json"
echo
cli "${as_demo[@]}" polls "$page"
cli "${as_demo[@]}" qa "$page"
cli "${as_demo[@]}" projects delete "$project"

echo "Other toolkits: each service describes itself, and refuses what a SOAP 1.1 server refuses"
echo "\$ curl $url/services/Reports?wsdl   (operations it declares)"
curl --silent --show-error --fail --noproxy '*' --max-time 10 "$url/services/Reports?wsdl" \
  | grep -o '<wsdl:operation name="[^"]*"' | sort -u | cut -d'"' -f2 | paste -sd' ' | fold -s -w 96
echo
echo "\$ curl --data @soap12-envelope.xml $url/services/Login   (a SOAP 1.2 envelope)"
curl --silent --noproxy '*' --max-time 10 -H 'Content-Type: application/soap+xml' \
  --data '<e:Envelope xmlns:e="http://www.w3.org/2003/05/soap-envelope"><e:Body/></e:Envelope>' \
  "$url/services/Login" | grep -o '<faultcode>[^<]*</faultcode><faultstring>[^<]*</faultstring>'
echo

echo "Sandbox requests:"
cat "$data/sandbox.log"

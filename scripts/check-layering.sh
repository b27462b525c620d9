#!/usr/bin/env bash
# Checks the layering of the sources by their #include lines and a few telling strings; the
# rules are those of docs/design.md, "Layering". Prints one line per violation and exits 1 if
# there is any. Reads files only: no build needed.
set -euo pipefail
cd "$(dirname "$0")/.."

violations=0
fail() {  # rule, location, what
  printf 'layering (%s): %s: %s\n' "$1" "$2" "$3" >&2
  violations=$((violations + 1))
}

# The C and C++ files under a folder, sorted.
sources() {
  find "$1" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.cc' \
    -o -name '*.h.in' \) | sort
}

# Prints "line<TAB>form<TAB>path" for each #include of a file; form is " or <.
includes() {
  grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]' "$1" |
    sed -E 's/^([0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*(["<])([^">]*).*/\1\t\2\t\3/' ||
    true
}

# Sets `target` to the folder of src/ that an include of `file` reaches ("util", "soap", ...),
# or to nothing when it reaches no file of the library's own sources. No subshell: it runs
# once per include.
src_target() {
  local file=$1 form=$2 path=$3 resolved first
  target=
  if [[ "$path" == *..* ]]; then
    resolved=$(realpath -m --relative-to=. "$(dirname "$file")/$path")
    if [[ "$resolved" == src/* ]]; then
      resolved=${resolved#src/}
      target=${resolved%%/*}
    fi
    return 0
  fi
  path=${path#src/}
  first=${path%%/*}
  if [[ "$path" == */* && -d "src/$first" ]]; then
    target=$first
  elif [[ "$form" == '"' && "$file" == src/* && -f "${file%/*}/$path" ]]; then
    resolved=${file#src/}
    target=${resolved%%/*}
  fi
  return 0
}

# (a) src/util depends on nothing else in src/; public brenmoor/ headers are fine.
while read -r file; do
  while IFS=$'\t' read -r line form path; do
    src_target "$file" "$form" "$path"
    if [[ -n "$target" && "$target" != util ]]; then
      fail a "$file:$line" "util includes \"$path\" from src/$target; util may include only util/"
    fi
  done < <(includes "$file")
done < <(sources src/util)

# (b) src/soap knows nothing of the service layer or the operations, nor of ZylService.
upper='service auth projects datarecords assets users reports quotas'
while read -r file; do
  while IFS=$'\t' read -r line form path; do
    src_target "$file" "$form" "$path"
    if [[ -n "$target" && " $upper " == *" $target "* ]]; then
      fail b "$file:$line" "soap includes \"$path\" from src/$target"
    fi
    if [[ "$path" == */zyl_service.h || "$path" == zyl_service.h ]]; then
      fail b "$file:$line" "soap includes \"$path\"; the SOAP layer does not know ZylService"
    fi
  done < <(includes "$file")
done < <(sources src/soap)

# (c) Service paths and namespace URIs are written once, in the catalog.
for needle in '/services/' 'urn:telvane-'; do
  while IFS= read -r hit; do
    fail c "${hit%%:*}:$(cut -d: -f2 <<<"$hit")" \
      "\"$needle\" appears outside src/service/catalog.h"
  done < <(grep -rnF --include='*.h' --include='*.hpp' --include='*.cpp' --include='*.cc' \
    -e "$needle" src | grep -v '^src/service/catalog\.h:' || true)
done

# (d) MD5 lives in src/util; src/auth uses it and holds none of its own.
for file in src/util/md5.h src/util/md5.cpp; do
  if [[ ! -f "$file" ]]; then fail d "$file" "missing: MD5 lives in src/util"; fi
done
while read -r file; do
  if [[ "$(basename "$file")" == *[mM][dD]5* ]]; then fail d "$file" "an MD5 file in src/auth"; fi
  while IFS= read -r hit; do
    fail d "$file:${hit%%:*}" "defines MD5 in src/auth: ${hit#*:}"
  done < <(grep -nE '(class|struct)[[:space:]]+CMD5\b|CMD5::|0x[dD]76[aA][aA]478' "$file" || true)
done < <(find src/auth -type f | sort)

# (e) The CLI is a client of the public API: <brenmoor/...>, system and third-party headers,
# and its own files, never src/.
while read -r file; do
  while IFS=$'\t' read -r line form path; do
    if [[ "$path" == brenmoor/* && "$path" != *..* ]]; then continue; fi
    if [[ "$form" == '"' ]]; then
      if [[ "$path" == *..* || ! -f "$(dirname "$file")/$path" ]]; then
        fail e "$file:$line" "tools includes \"$path\", neither a brenmoor/ header nor its own"
      fi
    elif [[ "$path" == *..* || "$path" == src/* || -d "src/${path%%/*}" && "$path" == */* ]]; then
      fail e "$file:$line" "tools includes <$path> from the library's sources"
    fi
  done < <(includes "$file")
done < <(sources tools)
if grep -nE '(PROJECT_SOURCE_DIR|CMAKE_SOURCE_DIR|\.\.)/src' tools/CMakeLists.txt >/dev/null; then
  fail e tools/CMakeLists.txt "puts src/ on the CLI's include path"
fi

# (f) Public headers stand alone and keep the service object's state private.
while read -r file; do
  while IFS=$'\t' read -r line form path; do
    src_target "$file" "$form" "$path"
    if [[ -n "$target" || "$path" == src/* ]]; then
      fail f "$file:$line" "a public header includes \"$path\" from src/"
    fi
  done < <(includes "$file")
  while IFS= read -r hit; do
    fail f "$file:${hit%%:*}" "a public header defines the state: ${hit#*:}"
  done < <(grep -nE '(struct|class)[[:space:]]+State[[:space:]]*\{' "$file" || true)
done < <(sources include/brenmoor)

# (g) pugixml shows in the public headers only where a record's readXML takes a pugi::xml_node.
while read -r file; do
  if grep -qi 'pugi' "$file" &&
    ! grep -qE 'readXML[[:space:]]*\([[:space:]]*(const[[:space:]]+)?pugi::xml_node\b' "$file"; then
    fail g "$file" "mentions pugixml without a readXML(pugi::xml_node)"
  fi
done < <(sources include/brenmoor)

if ((violations > 0)); then
  echo "layering: $violations violation(s); the rules are in docs/design.md, \"Layering\"" >&2
  exit 1
fi
echo "layering: ok"

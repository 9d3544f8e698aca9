#!/bin/bash
# Rules of the sources that no compiler checks. Prints every place that breaks one.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")/.."

broken=0
lock_header=modules/python/source/interpreter/lib_python_lock.h
layers=()
for folder in frameworks modules host; do
  [[ ! -d $folder ]] || layers+=("$folder")
done

# report WHAT PLACES  A rule is broken where PLACES isn't empty.
report() {
  [[ -n $2 ]] || return 0
  printf '%s:\n%s\n' "$1" "$2"
  broken=1
}

# search PATTERN FOLDER...  Lines of C and C++ sources; no match is no failure.
search() {
  local pattern=$1
  shift
  grep -rnE --include='*.h' --include='*.c' --include='*.cpp' -- "$pattern" "$@" || [[ $? -eq 1 ]]
}

# includes LAYER FOLDER...  Includes of the layer's files in other folders.
includes() {
  local layer=$1 folders=() folder
  shift
  for folder in "$@"; do
    [[ ! -d $folder ]] || folders+=("$folder")
  done
  [[ ${#folders[@]} -eq 0 ]] || search "^[[:space:]]*#[[:space:]]*include[[:space:]]*[\"<]([^\">]*/)?$layer/" "${folders[@]}"
}

report "The interpreter's lock has one door, $lock_header" \
  "$(search '\b(PyGILState_(Ensure|Release)|PyEval_(Save|Restore|Acquire|Release)(Thread|Lock)|PyThreadState_Swap|Py_(BEGIN|END)_ALLOW_THREADS|Py_(UN)?BLOCK_THREADS)\b' "${layers[@]}" | grep -v "^$lock_header:")"
report "Versions of the interpreter are told apart in kit/i_cpython.h and i_cpython.cpp only" \
  "$(search '\bPY_(VERSION_HEX|M[A-Z]+_VERSION)\b' "${layers[@]}" | grep -vE '/kit/i_cpython\.(h|cpp):')"
report "The module and the frameworks know nothing of the host" "$(includes host modules frameworks)"
report "The host and the frameworks know nothing of the module" "$(includes modules host frameworks)"

reference=$(mktemp)
trap 'rm -f "$reference"' EXIT
/usr/bin/python3 frameworks/generate/boundary.py --reference "$reference"
report "docs/host-reference.md is old: python3 frameworks/generate/boundary.py --reference docs/host-reference.md" \
  "$(diff -N docs/host-reference.md "$reference" | head -n 20)"

# Other versions format some lines in another way.
if clang-format --version 2>/dev/null | grep -q 'version 14\.'; then
  report "Not formatted: clang-format -i FILE" "$(
    find frameworks modules host tests bench \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0 2>/dev/null |
      xargs -0 clang-format --dry-run 2>&1 | grep 'warning:' | cut -d: -f1 | sort | uniq -c
  )"
else
  echo "clang-format 14 is not installed: the formatting is not checked"
fi

exit $broken

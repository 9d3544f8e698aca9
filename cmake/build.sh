# shellcheck shell=bash
# For `run` and `test`: which interpreter to build for, and how to build the tree at `here`.

# Prints the interpreter's own file when it can be embedded; otherwise why not. Neither the current
# folder nor the environment gets into its way.
can_embed() { (cd / && "$1" -Es "$here/cmake/describe_python.py" </dev/null); }

# Sets `python`: QLX_PYTHON, otherwise a CPython 3.7 that can be embedded, otherwise the system's.
choose_python() {
  local candidate reason IFS=$'\n'
  if [[ -n ${QLX_PYTHON-} ]]; then
    if [[ ! -f $QLX_PYTHON || ! -x $QLX_PYTHON ]]; then
      echo "QLX_PYTHON: $QLX_PYTHON is not an executable file" >&2
      return 1
    fi
    python=$(realpath --no-symlinks "$QLX_PYTHON")
    if ! reason=$(can_embed "$python" 2>&1); then
      reason=${reason##*$'\n'}
      echo "QLX_PYTHON: $QLX_PYTHON can't be embedded: ${reason:0:200}" >&2
      return 1
    fi
    return
  fi
  # The newest one of a version manager first. What is found may be no more than a launcher of
  # other versions, so every candidate is run.
  for candidate in "$(command -v python3.7)" \
    $(printf '%s\n' "${PYENV_ROOT:-$HOME/.pyenv}"/versions/3.7.*/bin/python3.7 | sort -rV) \
    /usr/local/bin/python3.7 /opt/python*/bin/python3.7; do
    [[ -x $candidate ]] || continue
    python=$(can_embed "$candidate" 2>/dev/null) && return
  done
  python=/usr/bin/python3
  echo "There is no CPython 3.7 with a shared library and headers: building for $python." >&2
}

# Progress of a build: one line that changes on a terminal, one line elsewhere; and its messages.
show_progress() {
  local line building=
  while IFS= read -r line; do
    case $line in
      "ninja: Entering"* | "ninja: no work to do."* | *"Re-checking globbed"*) ;;
      "["*"] "*)
        if [[ -t 2 ]]; then
          printf '\r\033[K%.*s' "$((${COLUMNS:-80} - 1))" "$line" >&2
        elif [[ -z $building ]]; then
          echo "Building in $1" >&2
        fi
        building=yes ;;
      *) printf '%s\n' "$line" >&2 ;;
    esac
  done
  if [[ -n $building && -t 2 ]]; then
    printf '\r\033[K' >&2
  fi
}

# build FOLDER INTERPRETER TARGET...  Configures only when the folder is new or was for another one.
build() {
  local folder=$1 interpreter=$2 log=$1/configure.log
  shift 2
  mkdir -p "$folder"
  (
    flock 9 # another command may be building here
    if [[ ! -e $folder/build.ninja ]] ||
      ! grep -qxF "QLX_PYTHON:FILEPATH=$interpreter" "$folder/CMakeCache.txt"; then
      echo "Configuring $folder for $interpreter" >&2
      if ! cmake -S "${here:?}" -B "$folder" -G Ninja "-DQLX_PYTHON:FILEPATH=$interpreter" >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
      fi
    fi
    ninja -C "$folder" "$@" 2>&1 9>&- | show_progress "$folder"
  ) </dev/null 9>"$folder/.lock"
}

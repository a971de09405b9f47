# Sourced by ./run and ./test: installs what is missing and builds a preset. Whatever this says goes to standard
# error, so that the output of habitra itself can be piped.

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# provide_packages GROUP...: installs the packages of these groups (cmake/packages) that are not there yet.
provide_packages() {
  local group package wanted=() missing=() installed
  while read -r group package; do
    case " $* " in *" $group "*) wanted+=("$package") ;; esac
  done < <(grep -v '^#' "$top/cmake/packages")
  # Installed under this name, or provided under it by an installed package.
  installed=" $(dpkg-query -W -f='${db:Status-Status} ${Package} ' "${wanted[@]}" 2>/dev/null || true) "
  for package in "${wanted[@]}"; do
    case "$installed" in *" installed $package "*) ;; *) missing+=("$package") ;; esac
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Habitra needs these packages: ${missing[*]}" >&2
      echo "Install them as root, or install sudo, and try again." >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing with apt-get: ${missing[*]}" >&2
  {
    "${as_root[@]}" apt-get -qq update &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install --yes --no-install-recommends "${missing[@]}"
  } >&2 </dev/null
}

# provide_build PRESET [TARGET...]: configures the preset once and builds what has changed. Two calls at the same time
# take turns.
provide_build() {
  local preset=$1 folder=$top/build/$1
  shift
  mkdir -p "$folder"
  (
    flock 9
    if [ ! -f "$folder/build.ninja" ]; then
      echo "Building Habitra ($preset); the first time takes a few minutes." >&2
      (cd "$top" && cmake --preset "$preset") >"$folder/configure.log" 2>&1 || {
        cat "$folder/configure.log" >&2
        rm -f "$folder/build.ninja"
        exit 1
      }
    fi
    case "$(ninja -C "$folder" -n "$@" 2>&1)" in
      *"no work to do"*) ;;
      *) ninja -C "$folder" "$@" >&2 ;;
    esac
  ) 9>"$folder/.lock"
}

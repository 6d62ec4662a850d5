# Sourced by the other scripts: finds the checkout, installs what is missing, builds a preset.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
configure_options=()

fail() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

# install_packages [LIST...]: installs the packages of scripts/packages.txt, or of these lists, that
# are not there yet, and leaves their names in `installed`.
install_packages() {
  local missing=() package
  installed=()
  [ $# -gt 0 ] || set -- scripts/packages.txt
  while read -r package; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done < <(grep -hv '^#' "$@")
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "these packages are missing, ask root for them: ${missing[*]}"
    root=(sudo)
  fi
  "${root[@]}" apt-get update -q
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}"
  installed=("${missing[@]}")
}

# build PRESET [TARGET...]; the array `configure_options` may hold options for CMake.
build() {
  local preset=$1
  shift
  # CMake keeps absolute paths: a build folder that came with a moved checkout is made anew.
  local cache=build/$preset/CMakeCache.txt
  if [ -e "$cache" ] && ! grep -qx "CMAKE_HOME_DIRECTORY:INTERNAL=$top" "$cache"; then
    rm -r "build/$preset"
  fi
  local configured
  configured=$(cmake --preset "$preset" "${configure_options[@]}" 2>&1) || fail "$configured"
  cmake --build --preset "$preset" ${1:+--target "$@"}
}

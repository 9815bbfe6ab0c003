# What ./run, ./check and ./bench share. Sourced with the repository as the working directory.

ORVANE_PACKAGES="g++ cmake ninja-build pkg-config libboost-dev libeigen3-dev libfcl-dev libassimp-dev libpugixml-dev libgtest-dev libcli11-dev nlohmann-json3-dev"

# install_packages NAME...: installs the Debian packages that are missing; says what to install where it may not.
install_packages()
{
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
      as_root=(sudo -n)
    else
      echo "Please install as root: apt-get install ${missing[*]}" >&2
      return 1
    fi
  fi
  echo "Installing ${missing[*]}"
  local log
  log=$(mktemp)
  if ! { "${as_root[@]}" apt-get update -qq &&
         DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "Could not install: ${missing[*]}" >&2
    return 1
  fi
  rm -f "$log"
}

# build PRESET [TARGET...]: configures on first need and builds, quietly unless it fails.
build()
{
  local preset=$1 log=build/$1.log launcher=()
  shift
  mkdir -p build
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  export CCACHE_SLOPPINESS=pch_defines,time_macros
  if [ ! -f "build/$preset/build.ninja" ]; then
    cmake --preset "$preset" "${launcher[@]}" ${ORVANE_CMAKE_OPTIONS:-} >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  fi
  cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1 || { grep -vE '^\[[0-9]+/[0-9]+\]' "$log" | head -n 200 >&2; return 1; }
}

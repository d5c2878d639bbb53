# Sourced by ./run, ./test and .ci/run from the repository root: installs the
# packages that are missing, and builds.

# need PACKAGE...: installs those that are missing, and says so.
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "installing what is missing: ${missing[*]}"
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  export DEBIAN_FRONTEND=noninteractive
  "${as_root[@]}" apt-get -o DPkg::Lock::Timeout=300 update -qq
  "${as_root[@]}" apt-get -o DPkg::Lock::Timeout=300 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

need_to_build() {
  need g++ cmake ninja-build qt6-base-dev libeigen3-dev libpugixml-dev libcli11-dev libfmt-dev \
       libyaml-cpp-dev nlohmann-json3-dev
}

need_to_test() {
  need_to_build
  need libgtest-dev libgmock-dev graphviz gtkwave libxml2-utils pkg-config python3-jsonschema
  need python3-yaml man-db
}

# quietly LOG COMMAND...: shows what the command printed only when it fails.
quietly() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 || { cat "$log"; return 1; }
}

# configure PRESET ARGUMENT...: unless it was done with the same arguments.
configure() {
  local preset=$1 dir=build/$1
  shift
  mkdir -p "$dir"
  [ -f "$dir/build.ninja" ] && [ "$(cat "$dir/configured" 2>/dev/null)" = "$*" ] && return
  echo "configuring $preset"
  quietly "$dir/configure.log" cmake --preset "$preset" "$@"
  echo "$*" >"$dir/configured"
}

# build PRESET [TARGET...]: everything, where no target is named.
build() {
  local preset=$1 dir=build/$1
  shift
  echo "building $preset"
  quietly "$dir/build.log" cmake --build "$dir" ${*:+--target "$@"}
}

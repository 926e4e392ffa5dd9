# What ./run and ./test share: packages, configuring, building. Sourced, never run.

# Everything that building and testing needs, as Debian 12 names it.
TARN_PACKAGES=(
  binutils clang cmake coreutils g++ gcc libbenchmark-dev libboost-dev libclang-rt-14-dev
  libcli11-dev libfontconfig-dev libfreetype-dev libgtest-dev libicu-dev ninja-build
  nlohmann-json3-dev zlib1g-dev
)

say() { printf '%s\n' "$*" >&2; }

# Installs the packages that are missing; quick when there are none.
install_packages() {
  local missing=() package
  local installed
  # Packages that dpkg has never heard of make the query fail; the others are listed all the same.
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${TARN_PACKAGES[@]}" 2>/dev/null) || true
  for package in "${TARN_PACKAGES[@]}"; do
    grep -qxF "$package installed" <<<"$installed" || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { say "missing packages: ${missing[*]} (become root to install them)"; return 1; }
    as_root=(sudo)
  fi
  say "installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -qq >&2 &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
      --no-install-recommends "${missing[@]}" >/dev/null
}

# build_preset PRESET [TARGET...]: configures once, builds the targets (all without any), and shows
# the output only when something goes wrong.
build_preset() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if [ ! -f "$root/build/$preset/build.ninja" ]; then
    say "configuring $preset"
    (cd "$root" && cmake --preset "$preset") >"$log" 2>&1 || { cat "$log" >&2; rm -f "$log"; return 1; }
  fi
  local targets=()
  [ $# -gt 0 ] && targets=(--target "$@")
  if ! (cd "$root" && cmake --build --preset "$preset" "${targets[@]}") >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
}

# Tests make and remove thousands of small files; memory is the place for them where there is one.
use_fast_temp_directory() {
  if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
}

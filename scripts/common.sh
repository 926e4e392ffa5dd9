# What ./run and ./test share: packages, configuring, building. Sourced, never run.

# What building and testing needs, as Debian 12 names it.
TARN_PACKAGES=(
  binutils cmake coreutils g++ gcc groff-base libbenchmark-dev libboost-dev libcli11-dev
  libfontconfig-dev libfreetype-dev libgmime-3.0-dev libgtest-dev libgumbo-dev libical-dev libicu-dev libqpdf-dev libsqlite3-dev
  libssl-dev ninja-build nlohmann-json3-dev pkg-config zlib1g-dev
)

# What the further builds of `./test --all` need: sanitizers and fuzzing, memcheck, Windows, packages,
# static analysis.
TARN_MORE_PACKAGES=(
  clang clang-format clang-tidy cppcheck dpkg-dev file g++-mingw-w64-x86-64-posix googletest
  libclang-rt-14-dev lld llvm mypy pkg-config poppler-utils valgrind wine64 wine64-preloader
)

# What laying pages out needs: the libraries of the engines, what keeps their processes apart, and fonts
# with the metrics of the usual ones, of Chinese, Japanese and Korean, of Thai and the scripts of India, and
# of emoji.
TARN_PAGE_PACKAGES=(
  bubblewrap fonts-crosextra-caladea fonts-crosextra-carlito fonts-dejavu-core fonts-liberation2
  fonts-lohit-beng-bengali fonts-lohit-deva fonts-lohit-gujr fonts-lohit-guru fonts-lohit-knda fonts-lohit-mlym
  fonts-lohit-orya fonts-lohit-taml fonts-lohit-telu fonts-noto-cjk fonts-noto-color-emoji fonts-tlwg-garuda-ttf
  libcairo2-dev libgif-dev libgumbo-dev libjpeg-dev liblitehtml-dev libpango1.0-dev libpng-dev
  libqpdf-dev libreoffice-writer-nogui libreofficekit-dev libseccomp-dev libwebp-dev pkg-config
)

# What the tests of pages read them with, and watch those who make them.
TARN_PAGE_TEST_PACKAGES=(chromium poppler-utils python3 sqlite3 strace)

# What the tests of the archive read contacts and calendars with.
TARN_ARCHIVE_TEST_PACKAGES=(python3-vobject)

# A Slurm for this machine alone, on which an export by many is tested.
TARN_CLUSTER_PACKAGES=(munge python3 slurm-client slurmctld slurmd util-linux)

say() { printf '%s\n' "$*" >&2; }

# install_packages PACKAGE...: installs those that are missing; quick when there are none.
install_packages() {
  local missing=() package
  local installed
  # Packages that dpkg has never heard of make the query fail; the others are listed all the same.
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "$@" 2>/dev/null) || true
  for package in "$@"; do
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

# configure_pages PRESET: from now on the preset builds the helpers that lay out pages, whose packages
# are there. A build tree from before they were installed is configured anew. The tree goes on looking
# for them by itself: it builds without them, too, once they are removed.
configure_pages() {
  local preset=$1 log
  local cache="$root/build/$preset/CMakeCache.txt"
  grep -qsx 'TARN_PAGES:STRING=AUTO' "$cache" && grep -qx 'TARN_PAGES_FOUND:INTERNAL=TRUE' "$cache" && return 0
  log=$(mktemp)
  say "configuring $preset with pages"
  if ! (cd "$root" && cmake --preset "$preset" -DTARN_PAGES=AUTO) >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
  grep -qx 'TARN_PAGES_FOUND:INTERNAL=TRUE' "$cache" ||
    { say "a library of the page helpers is missing"; return 1; }
}

# Tests make and remove thousands of small files; memory is the place for them where there is one.
use_fast_temp_directory() {
  if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
}

# The server of the Windows build's Wine prefix, which is made first when there is none. It has to
# run before any test: one that starts it would wait for the prefix to be made. Whatever prefix and
# libraries the caller has in mind for other programs are not for these.
start_wine_server() {
  unset WINEPATH
  export WINEPREFIX="$root/build/windows/wine-prefix"
  mkdir -p "$WINEPREFIX"
  /usr/lib/wine/wineserver64 -p </dev/null >/dev/null 2>&1 || true
  "$root/scripts/wine-run" wineboot.exe </dev/null >/dev/null 2>&1
}

stop_wine_server() {
  local prefix="$root/build/windows/wine-prefix" folder
  WINEPREFIX="$prefix" /usr/lib/wine/wineserver64 -k </dev/null >/dev/null 2>&1 || true
  # It leaves its folder, which is named by the prefix.
  [ -d "$prefix" ] || return 0
  for folder in "${TMPDIR:-/tmp}"/wine-*/"$(printf 'server-%s-%x' $(stat -c '%D %i' "$prefix"))"; do
    [ ! -d "$folder" ] || rm -rf "${folder%/*}" || true
  done
}

#!/usr/bin/env bash
# scripts/test-packages.sh [RELEASE [WINDOWS]]: do the packages hold what a host needs?
#
# Packs the two build trees (build/release and build/windows, which have been configured), unpacks
# the .deb and the .zip elsewhere, and builds examples/consumers against nothing but what came out:
# the program in C by pkg-config, the one in C++ by CMake. Runs them and tarnmail, and compares what
# they print, byte by byte. Programs for Windows run by scripts/wine-run; whoever calls this may
# have a Wine server running.
#
# Ends with one line, "packages: ..."; exit status 0 when all is well.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
release=$(realpath "${1:-$root/build/release}")
windows=$(realpath "${2:-$root/build/windows}")
expected=$root/tests/packages
export LC_ALL=C TZ=UTC

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "packages: FAILED: $*"; exit 1; }

# quietly WHAT COMMAND...: shows the output only when the command fails.
quietly() {
  local what=$1
  shift
  "$@" >"$work/log" 2>&1 </dev/null || { cat "$work/log" >&2; fail "$what"; }
}

# same WHAT EXPECTED ACTUAL
same() { diff -u "$2" "$3" >&2 || fail "$1 differs"; }

# same_text WHAT EXPECTED ACTUAL: programs for Windows end lines of text by CR LF.
same_text() { same "$1" "$2" <(tr -d '\r' <"$3"); }

# pack BUILD PATTERN TARGET...: brings the targets up to date and leaves the package's path in
# `package`.
pack() {
  local build=$1 pattern=$2
  shift 2
  [ -f "$build/CPackConfig.cmake" ] || fail "$build has not been configured"
  quietly "building in $build" cmake --build "$build" --target "$@"
  find "$build" -maxdepth 1 -name "$pattern" -delete
  quietly "packing $build" cpack --config "$build/CPackConfig.cmake" -B "$build"
  package=$(find "$build" -maxdepth 1 -name "$pattern")
  [ -f "$package" ] || fail "no $pattern in $build"
}

# check_tree WHAT FOLDER LIST DOCS: the files are those listed, the pages below DOCS apart, and none
# names a place on the build machine.
check_tree() {
  (cd "$2" && find . -type f -printf '%P\n' | grep -v "^$4/.*\.\(md\|png\)\$" | sort) >"$work/files"
  same "$1: the list of files" "$3" "$work/files"
  cmp -s "$root/docs/embedding.md" "$2/$4/embedding.md" || fail "$1: no $4/embedding.md"
  if grep -rlF -e "$root/" -e "$release" -e "$windows" "$2" >&2; then
    fail "$1: names places on the build machine"
  fi
}

# run_consumers WHAT PAGES SUMMARY RUNNER...: what the two programs print.
run_consumers() {
  local what=$1 pages=$2 summary=$3 status=0
  shift 3
  (cd "$work/mail" && "$@" "$pages" html-inline-image.eml 2 page) >"$work/out" ||
    fail "$what: the program in C"
  same_text "$what: what the program in C prints" <(echo "page 2 of 2") "$work/out"
  same "$what: the page drawn in C" "$expected/html-page-2.txt" "$work/mail/page"

  (cd "$work/mail" && "$@" "$summary" mailbox.pst) >"$work/out" || fail "$what: the program in C++"
  same_text "$what: what the program in C++ prints" "$expected/summary.txt" "$work/out"
  # The exception leaves the library and is caught in the program.
  (cd "$work/mail" && "$@" "$summary" damaged.pst) >"$work/out" 2>&1 || status=$?
  [ "$status" -eq 1 ] || fail "$what: exit status $status for a damaged store"
  same_text "$what: a damaged store" <(echo "damaged.pst: fread failed") "$work/out"
}

# run_tarnmail WHAT TARNMAIL RUNNER...
run_tarnmail() {
  local what=$1 tarnmail=$2
  shift 2
  (cd "$work/mail" && "$@" "$tarnmail" info mailbox.pst) >"$work/out" || fail "$what: tarnmail"
  same_text "$what: what tarnmail prints" "$expected/info.txt" "$work/out"
}

mkdir "$work/mail" "$work/consumers"
cp "$root"/examples/*.eml "$root"/examples/*.pst "$work/mail"
head -c 3000 "$root/examples/mailbox.pst" >"$work/mail/damaged.pst"
cp -R "$root/examples/consumers/." "$work/consumers"
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

# The .deb ----------------------------------------------------------------------------------------

pack "$release" 'tarnpst_*.deb' TarnPst Tarnbase tarnmail compressed_documents
deb=$package
multiarch=$(gcc -print-multiarch)
tree=$work/deb
dpkg-deb -x "$deb" "$tree" || fail "dpkg-deb cannot unpack $deb"

[ "$(dpkg-deb -f "$deb" Package)" = tarnpst ] || fail "the name of the .deb"
[ "$(dpkg-deb -f "$deb" Architecture)" = "$(dpkg --print-architecture)" ] ||
  fail "the architecture of the .deb"
dpkg-deb -f "$deb" Depends | tr ',' '\n' | sed 's/^ //; s/ .*//' | sort >"$work/depends"
same "the dependencies of the .deb" "$expected/deb-depends.txt" "$work/depends"
dpkg-deb -c "$deb" | awk '$2 != "root/root" || $1 ~ /^-.......w/ { bad = 1; print } END { exit bad }' >&2 ||
  fail "owners or permissions in the .deb"
sed "s/MULTIARCH/$multiarch/" "$expected/deb-files.txt" >"$work/deb-files"
check_tree "the .deb" "$tree" "$work/deb-files" usr/share/doc/tarnpst/docs

flags=$(PKG_CONFIG_SYSROOT_DIR="$tree" PKG_CONFIG_PATH="$tree/usr/lib/$multiarch/pkgconfig" \
  pkg-config --cflags --libs tarnpst) || fail "pkg-config does not know tarnpst"
# Unquoted: one word a flag.
quietly "building the program in C" gcc -std=c11 "${warnings[@]}" \
  "$work/consumers/c/pages.c" -o "$work/pages" $flags -Wl,-rpath,"$tree/usr/lib/$multiarch"
quietly "configuring the program in C++" cmake -G Ninja -S "$work/consumers/cpp" -B "$work/cpp" \
  -DCMAKE_PREFIX_PATH="$tree/usr" -DCMAKE_CXX_FLAGS="${warnings[*]}"
quietly "building the program in C++" cmake --build "$work/cpp"
run_consumers "the .deb" "$work/pages" "$work/cpp/summary" env -u LD_LIBRARY_PATH

# The filter finds the kernel beside itself, whoever loads it.
env -u LD_LIBRARY_PATH ldd "$tree/usr/lib/$multiarch/libTarnPst.so" |
  sed -nE 's/^\tlibTarnbase\.so => (.*) \(.*/\1/p' >"$work/out"
same "the .deb: the kernel of libTarnPst.so" \
  <(echo "$tree/usr/lib/$multiarch/libTarnbase.so") "$work/out"
run_tarnmail "the .deb" "$tree/usr/bin/tarnmail" env -u LD_LIBRARY_PATH
gzip -dc "$tree/usr/share/man/man1/tarnmail.1.gz" >"$work/tarnmail.1"
"$root/scripts/check-manual.sh" "$tree/usr/bin/tarnmail" "$work/tarnmail.1" "$root/examples" ||
  fail "the manual page"

# The .zip ----------------------------------------------------------------------------------------

cross=x86_64-w64-mingw32
pack "$windows" 'TarnPst-*.zip' TarnPst Tarnbase tarnmail \
  TarnPst_import_library Tarnbase_import_library
zip=$package
mkdir "$work/zip"
(cd "$work/zip" && cmake -E tar xf "$zip") || fail "the .zip cannot be unpacked"
tree=$work/zip/$(basename "$zip" .zip)
check_tree "the .zip" "$tree" "$expected/zip-files.txt" doc/docs

# imports PROGRAM: the DLLs it wants that are not the system's.
imports() { $cross-objdump -p "$1" | sed -nE 's/^\tDLL Name: (Tarn.*|lib.*)$/\1/p' | sort; }
same "the .zip: what TarnPst.dll imports" <(echo Tarnbase.dll) <(imports "$tree/bin/TarnPst.dll")
same "the .zip: what tarnmail.exe imports" <(echo Tarnbase.dll) <(imports "$tree/bin/tarnmail.exe")
same "the .zip: what Tarnbase.dll imports" /dev/null <(imports "$tree/bin/Tarnbase.dll")

flags=$(PKG_CONFIG_LIBDIR="$tree/lib/pkgconfig" pkg-config --cflags --libs tarnpst) ||
  fail "pkg-config does not know tarnpst of the .zip"
quietly "building the program in C for Windows" $cross-gcc-posix -static -std=c11 "${warnings[@]}" \
  "$work/consumers/c/pages.c" -o "$work/pages.exe" $flags
quietly "building the program in C for Windows with the .lib files" \
  $cross-gcc-posix -std=c11 "${warnings[@]}" "$work/consumers/c/pages.c" \
  -o "$work/pages-lib.exe" -I"$tree/include" "$tree/lib/TarnPst.lib" "$tree/lib/Tarnbase.lib"
quietly "configuring the program in C++ for Windows" cmake -G Ninja \
  -S "$work/consumers/cpp" -B "$work/cpp-windows" \
  --toolchain "$root/cmake/toolchains/mingw-w64-x86_64.cmake" \
  -DTarnPst_DIR="$tree/lib/cmake/TarnPst" \
  -DCMAKE_CXX_FLAGS="${warnings[*]}" -DCMAKE_EXE_LINKER_FLAGS=-static
quietly "building the program in C++ for Windows" cmake --build "$work/cpp-windows"

# Microsoft's compiler is not at hand; what CMake would give it is.
cat >"$work/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Others LANGUAGES NONE)
set(MSVC TRUE)
find_package(TarnPst REQUIRED)
foreach(library TarnPst Tarnbase)
  get_target_property(place TarnPst::${library} IMPORTED_IMPLIB_RELEASE)
  file(COPY_FILE ${place} ${CMAKE_BINARY_DIR}/${library}.lib)
endforeach()
END
quietly "finding the .lib files by CMake" cmake -G Ninja -S "$work" -B "$work/others" \
  -DTarnPst_DIR="$tree/lib/cmake/TarnPst"
for library in TarnPst Tarnbase; do
  cmp "$work/others/$library.lib" "$tree/lib/$library.lib" >&2 || fail "CMake's $library.lib"
done

export WINEPREFIX=${WINEPREFIX:-$windows/wine-prefix}
wine_path="Z:$tree/bin"
export WINEPATH=${wine_path//\//\\}
for pages in pages.exe pages-lib.exe; do
  run_consumers "the .zip, $pages" "$work/$pages" "$work/cpp-windows/summary.exe" \
    "$root/scripts/wine-run"
done
# Beside its libraries it needs no search path; wine-run has one for those who give none.
WINEPATH='C:\' run_tarnmail "the .zip" "$tree/bin/tarnmail.exe" "$root/scripts/wine-run"

echo "packages: ok: $(basename "$deb"), $(basename "$zip")"

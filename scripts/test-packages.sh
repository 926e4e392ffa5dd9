#!/usr/bin/env bash
# scripts/test-packages.sh [RELEASE [WINDOWS]]: do the packages hold what a host needs?
#
# Packs the two build trees (build/release and build/windows, which have been configured), unpacks
# the .deb and the .zip elsewhere, and builds examples/consumers against nothing but what came out:
# the program in C by pkg-config, the one in C++ by CMake, the one that calls the catching shim by
# hand. Runs them and tarnmail, and compares what they print, byte by byte. Does the same with what
# `cmake --install` leaves. Programs for Windows run by scripts/wine-run; whoever calls this may have
# a Wine server running.
#
# Works in a folder of the Windows build tree, which needs about 100 MB and is removed at the end.
# The name of the folder and that of the mail's hold what names may hold, a blank and a letter
# beyond ASCII.
#
# Ends with one line, "packages: ..."; exit status 0 when all is well.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
release=$(realpath "${1:-$root/build/release}")
windows=$(realpath "${2:-$root/build/windows}")
expected=$root/tests/packages
export LC_ALL=C TZ=UTC

fail() { echo "packages: FAILED: $*"; exit 1; }

for build in "$release" "$windows"; do
  [ -f "$build/CPackConfig.cmake" ] || fail "$build has not been configured"
done
work=$(mktemp -d "$windows/packages under test.XXXXXX")
trap 'rm -rf "$work"' EXIT

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

# pack BUILD PATTERN: brings what is packed up to date and leaves the package's path in `package`.
pack() {
  local build=$1 pattern=$2
  quietly "building in $build" cmake --build "$build" --target shipped
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
  "$root/scripts/check-links.sh" "$2/$(dirname "$4")" >&2 || fail "$1: dead links"
  if grep -rlF -e "$root/" -e "$release" -e "$windows" "$2" >&2; then
    fail "$1: names places on the build machine"
  fi
}

# check_notices WHAT COPYRIGHT PART...: names the parts that are not ours, and has the text of every
# license that it names.
check_notices() {
  local what=$1 copyright=$2 part
  shift 2
  for part in "$@"; do
    grep -q "^Files: .*$part" "$copyright" || fail "$what: no notice of $part"
  done
  awk '/^Files:/ { inside = 1 } /^$/ { inside = 0 } inside && sub(/^License: /, "")' "$copyright" |
    sed 's/ and /\n/' | sort -u >"$work/named"
  awk '/^$/ { start = 1; next } start && sub(/^License: /, "") { print } { start = 0 }' "$copyright" |
    sort >"$work/given"
  same "$what: licenses named and given" "$work/named" "$work/given"
}

# check_elf WHAT FILE...: built with what the compiler and the linker give against attack.
check_elf() {
  local what=$1 file
  shift
  for file in "$@"; do
    readelf --wide --file-header --program-headers --dynamic "$file" >"$work/headers"
    nm -D "$file" >"$work/symbols"
    grep -q 'Type: *DYN' "$work/headers" || fail "$what: $file depends on its address"
    grep -q GNU_RELRO "$work/headers" || fail "$what: $file keeps its tables writable"
    grep -q 'Flags:.*NOW' "$work/headers" || fail "$what: $file binds late"
    grep -q 'GNU_STACK.* RW ' "$work/headers" || fail "$what: $file has an executable stack"
    grep -q __stack_chk_fail "$work/symbols" || fail "$what: $file does not guard its stack"
    grep -q printf_chk "$work/symbols" || fail "$what: $file has no checked functions"
    if [ "$(uname -m)" = x86_64 ]; then
      # Calls through pointers land on this instruction alone.
      objdump -d --section=.text "$file" >"$work/code"
      grep -q endbr64 "$work/code" || fail "$what: $file does not guard its calls"
    fi
  done
}

# check_pe WHAT FILE...: the same for Windows.
check_pe() {
  local what=$1 file flag
  shift
  for file in "$@"; do
    "$cross-objdump" -p "$file" >"$work/headers" || fail "$what: $file cannot be read"
    for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
      grep -q "^[[:space:]]*$flag" "$work/headers" || fail "$what: $file lacks $flag"
    done
  done
}

# check_repeatable BUILD PACKAGE: packed again, from files with other times, it is the same.
check_repeatable() {
  local build=$1 package=$2 again
  mkdir "$work/again"
  find "$build" -maxdepth 1 -type f \( -name '*.so' -o -name '*.dll' -o -name '*.exe' -o -name tarnmail \) \
    -exec touch {} +
  quietly "packing $build again" cpack --config "$build/CPackConfig.cmake" -B "$work/again"
  again=$work/again/$(basename "$package")
  cmp "$package" "$again" >&2 || fail "$(basename "$package") differs when it is packed again"
  rm -r "$work/again"
}

# read_flags WHAT FOLDER: what pkg-config says of the tarnpst.pc in the folder, one
# element of `flags` each.
read_flags() {
  local text
  text=$(PKG_CONFIG_LIBDIR=$2 pkg-config --cflags --libs tarnpst) ||
    fail "$1: pkg-config does not know tarnpst"
  # Blanks within an element have a backslash before them, which is taken off.
  # shellcheck disable=SC2162
  read -a flags <<<"$text"
}

# run_pages WHAT PAGES RUNNER...
run_pages() {
  local what=$1 pages=$2
  shift 2
  rm -f "$work/mail/ä/page"
  (cd "$work/mail" && "$@" "$pages" ä/html-inline-image.eml 2 ä/page) >"$work/out" ||
    fail "$what: the program in C"
  same_text "$what: what the program in C prints" <(echo "page 2 of 2") "$work/out"
  same "$what: the page drawn in C" "$expected/html-page-2.txt" "$work/mail/ä/page"
}

# run_summary WHAT SUMMARY RUNNER...
run_summary() {
  local what=$1 summary=$2 status=0
  shift 2
  (cd "$work/mail" && "$@" "$summary" ä/mailbox.pst) >"$work/out" || fail "$what: the program in C++"
  same_text "$what: what the program in C++ prints" "$expected/summary.txt" "$work/out"
  # The exception leaves the library and is caught in the program.
  (cd "$work/mail" && "$@" "$summary" ä/damaged.pst) >"$work/out" 2>&1 || status=$?
  [ "$status" -eq 1 ] || fail "$what: exit status $status for a damaged store"
  same_text "$what: a damaged store" <(echo "ä/damaged.pst: fread failed") "$work/out"
}

# run_shim WHAT PROGRAM RUNNER...: the exception ends in the shim.
run_shim() {
  local what=$1 program=$2 status=0
  shift 2
  (cd "$work/mail" && "$@" "$program" ä/html-inline-image.eml) >"$work/out" ||
    fail "$what: the program that calls the shim"
  same_text "$what: what the shim answers" <(echo "status 1") "$work/out"
  (cd "$work/mail" && "$@" "$program" ä/damaged.pst) >"$work/out" || status=$?
  [ "$status" -eq 1 ] || fail "$what: exit status $status for a damaged store by the shim"
  same_text "$what: a damaged store by the shim" <(printf 'status 0\nfread failed\n') "$work/out"
}

# run_embed WHAT PROGRAM RUNNER...
run_embed() {
  local what=$1 program=$2
  shift 2
  (cd "$work/mail" && "$@" "$program" ä/nested-attachments.eml) >"$work/out" ||
    fail "$what: the smallest program"
  tail -n 2 "$work/out" >"$work/tail"
  same_text "$what: what the smallest program prints last" "$expected/embed.txt" "$work/tail"
}

# run_tarnmail WHAT TARNMAIL RUNNER...
run_tarnmail() {
  local what=$1 tarnmail=$2
  shift 2
  (cd "$work/mail" && "$@" "$tarnmail" info ä/mailbox.pst) >"$work/out" || fail "$what: tarnmail"
  same_text "$what: what tarnmail prints" "$expected/info.txt" "$work/out"
}

mkdir -p "$work/mail/ä"
cp "$root"/examples/*.eml "$root"/examples/*.pst "$work/mail/ä"
head -c 3000 "$root/examples/mailbox.pst" >"$work/mail/ä/damaged.pst"
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

# Linux -------------------------------------------------------------------------------------------

multiarch=$(gcc -print-multiarch)

# check_linux WHAT PREFIX FOLDER: builds and runs what lies below the prefix, in a new folder.
check_linux() {
  local what=$1 prefix=$2 folder=$3 libraries=$2/lib/$multiarch
  local examples=$prefix/share/doc/tarnpst/examples flags
  local as_installed=(env -u LD_LIBRARY_PATH)
  mkdir "$folder"
  cp -R "$examples/." "$folder"
  read_flags "$what" "$libraries/pkgconfig"

  quietly "$what: building the program in C" gcc -std=c11 "${warnings[@]}" \
    "$folder/c/pages.c" -o "$folder/pages" "${flags[@]}" -Wl,-rpath,"$libraries"
  run_pages "$what" "$folder/pages" "${as_installed[@]}"

  quietly "$what: building the smallest program" gcc -std=c11 "${warnings[@]}" \
    "$folder/embed/embed.c" -o "$folder/smallest" "${flags[@]}" -Wl,-rpath,"$libraries"
  run_embed "$what" "$folder/smallest" "${as_installed[@]}"

  quietly "$what: configuring the program in C++" cmake -G Ninja -S "$folder/cpp" -B "$folder/build" \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="${warnings[*]}"
  quietly "$what: building the program in C++" cmake --build "$folder/build"
  run_summary "$what" "$folder/build/summary" "${as_installed[@]}"

  quietly "$what: building the shim" g++ -std=c++20 -O2 -shared -fPIC -fvisibility=hidden \
    "${warnings[@]}" "$folder/shim/catching-shim.cpp" -o "$folder/libCatchingShim.so" \
    "${flags[@]}" -Wl,-rpath,"$libraries"
  quietly "$what: building the program that calls the shim" gcc -std=c11 "${warnings[@]}" \
    "$folder/shim/status.c" -o "$folder/status" -L"$folder" -lCatchingShim "${flags[@]}" \
    -Wl,-rpath,"$folder:$libraries"
  run_shim "$what" "$folder/status" "${as_installed[@]}"
  quietly "$what: configuring the program that calls the shim" cmake -G Ninja \
    -S "$folder/shim" -B "$folder/build-shim" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_C_FLAGS="${warnings[*]}" -DCMAKE_CXX_FLAGS="${warnings[*]}"
  quietly "$what: building the program that calls the shim by CMake" cmake --build "$folder/build-shim"
  run_shim "$what, CMake" "$folder/build-shim/status" "${as_installed[@]}"

  # The filter finds the kernel beside itself, whoever loads it.
  "${as_installed[@]}" ldd "$libraries/libTarnPst.so" |
    sed -nE 's/^\tlibTarnbase\.so => (.*) \(.*/\1/p' >"$work/out"
  same "$what: the kernel of libTarnPst.so" <(echo "$libraries/libTarnbase.so") "$work/out"
  run_tarnmail "$what" "$prefix/bin/tarnmail" "${as_installed[@]}"
}

pack "$release" 'tarnpst_*.deb'
deb=$package
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
parts=(CLI11 "JSON for Modern C++" Boost libstdc++)
check_notices "the .deb" "$tree/usr/share/doc/tarnpst/copyright" "${parts[@]}"
check_elf "the .deb" "$tree/usr/bin/tarnmail" "$tree/usr/lib/$multiarch"/lib*.so
check_repeatable "$release" "$deb"
check_linux "the .deb" "$tree/usr" "$work/of deb"
gzip -dc "$tree/usr/share/man/man1/tarnmail.1.gz" >"$work/tarnmail.1"

# The archive commands: a package of its own, with which the program does all that the manual says.
both=$work/archive
find "$release" -maxdepth 1 -name 'tarnpst-archive_*.deb' -delete
quietly "packing the archive commands" cpack --config "$release/CPackArchiveConfig.cmake" -B "$release"
archive=$(find "$release" -maxdepth 1 -name 'tarnpst-archive_*.deb')
[ -f "$archive" ] || fail "no tarnpst-archive_*.deb"
[ "$(dpkg-deb -f "$archive" Package)" = tarnpst-archive ] || fail "the name of the archive commands' .deb"
dpkg-deb -f "$archive" Depends >"$work/depends"
for part in tarnpst libgmime-3.0-0 libsqlite3-0 python3; do
  grep -qw "$part" "$work/depends" || fail "the archive commands' .deb does not depend on $part"
done
dpkg-deb -x "$archive" "$both" || fail "dpkg-deb cannot unpack $archive"
(cd "$both" && find . -type f -printf '%P\n' | sort) >"$work/files"
modules=$(cd "$root/plain/slurm" && echo tarnslurm/*.py)
same "the archive commands' .deb: the list of files" <(printf '%s\n' usr/lib/tarnpst/tarnmail-{archive,search} \
  usr/share/doc/tarnpst-archive/{changelog.Debian.gz,copyright} usr/bin/tarnmail-slurm \
  ${modules//tarnslurm/usr/lib/tarnpst/tarnslurm} usr/share/man/man1/tarnmail-slurm.1.gz \
  usr/share/bash-completion/completions/tarnmail-slurm usr/share/zsh/vendor-completions/_tarnmail-slurm \
  usr/share/fish/vendor_completions.d/tarnmail-slurm.fish | sort) "$work/files"
dpkg-deb -x "$deb" "$both" || fail "dpkg-deb cannot unpack $deb"
status=0
"$tree/usr/bin/tarnmail" list "$root/examples/mailbox.pst" >"$work/out" 2>&1 || status=$?
[ "$status" -eq 3 ] || fail "exit status $status of list without its package"
"$root/scripts/check-manual.sh" "$both/usr/bin/tarnmail" "$work/tarnmail.1" "$root/examples" ||
  fail "the manual page"
# The command for clusters finds its modules, and the program beside it.
"$both/usr/bin/tarnmail-slurm" --help >"$work/out" || fail "tarnmail-slurm of the package"
gzip -dc "$both/usr/share/man/man1/tarnmail-slurm.1.gz" >"$work/tarnmail-slurm.1"
"$root/scripts/check-slurm-options.sh" "$both/usr/bin/tarnmail" "$both/usr/bin/tarnmail-slurm" \
  "$work/tarnmail-slurm.1" "$root/packaging/completions" || fail "the options of tarnmail-slurm"
python3 -B "$root/tests/slurm/slurm_test.py" "$both/usr/bin/tarnmail" "$both/usr/bin/tarnmail-slurm" \
  SubmissionTest.test_whole_export_is_that_of_one_machine >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "tarnmail-slurm of the package"; }

# The helpers, where they are built: a package of its own, which completes the other.
check_pages() {
  local pages both=$work/pages doc=usr/share/doc/tarnpst-pages
  find "$release" -maxdepth 1 -name 'tarnpst-pages_*.deb' -delete
  quietly "packing the helpers" cpack --config "$release/CPackPagesConfig.cmake" -B "$release"
  pages=$(find "$release" -maxdepth 1 -name 'tarnpst-pages_*.deb')
  [ -f "$pages" ] || fail "no tarnpst-pages_*.deb"
  [ "$(dpkg-deb -f "$pages" Package)" = tarnpst-pages ] || fail "the name of the helpers' .deb"
  dpkg-deb -f "$pages" Depends >"$work/depends"
  for part in tarnpst bubblewrap libreoffice-writer-nogui libcairo2; do
    grep -qw "$part" "$work/depends" || fail "the helpers' .deb does not depend on $part"
  done
  dpkg-deb -x "$pages" "$both" || fail "dpkg-deb cannot unpack $pages"
  (cd "$both" && find . -type f -printf '%P\n' | sort) >"$work/files"
  same "the helpers' .deb: the list of files" <(printf '%s\n' usr/lib/tarnpst/tarnmail-{office,pages} \
    "$doc/changelog.Debian.gz" "$doc/copyright") "$work/files"
  dpkg-deb -x "$deb" "$both" || fail "dpkg-deb cannot unpack $deb"
  (cd "$work/mail" && env -u LD_LIBRARY_PATH "$both/usr/bin/tarnmail" pages ä/html-inline-image.eml -o "$work/drawn") ||
    fail "tarnmail pages of the packages"
  [ -s "$work/drawn/page-0001.png" ] || fail "no page"
}
if [ -f "$release/CPackPagesConfig.cmake" ]; then check_pages; fi

# Without a package, and without what only a package has.
quietly "installing $release" cmake --install "$release" --prefix "$work/linux installed"
sed -e 's|^usr/||' -e '/changelog\.Debian/d' -e '/lintian/d' "$work/deb-files" >"$work/linux-files"
check_tree "cmake --install" "$work/linux installed" "$work/linux-files" share/doc/tarnpst/docs
check_linux "cmake --install" "$work/linux installed" "$work/of linux"

# Libraries in a place of their own, whatever the prefix.
(cd "$root" && quietly "configuring with libraries in /opt/t/lib" cmake --preset release \
  -B "$work/absolute" -DCMAKE_INSTALL_PREFIX=/opt/p -DCMAKE_INSTALL_LIBDIR=/opt/t/lib)
PKG_CONFIG_LIBDIR=$work/absolute pkg-config --cflags --libs tarnpst | xargs -n 1 >"$work/out"
same "an absolute library directory: tarnpst.pc" \
  <(printf '%s\n' -I/opt/p/include -L/opt/t/lib -lTarnPst -lTarnbase) "$work/out"
grep -qF 'TARN_LIBRARIES_FROM_PROGRAM=\\\"/opt/t/lib\\\"' "$work/absolute/compile_commands.json" ||
  fail "an absolute library directory: where tarnmail looks"

# Windows -----------------------------------------------------------------------------------------

cross=x86_64-w64-mingw32
toolchain=$root/cmake/toolchains/mingw-w64-x86_64.cmake
wine=$root/scripts/wine-run
export WINEPREFIX=${WINEPREFIX:-$windows/wine-prefix}

# check_imports WHAT FOLDER: each program and library there wants nothing but what is listed.
check_imports() {
  local program
  : >"$work/imports"
  for program in "$2"/*; do
    "$cross-objdump" -p "$program" >"$work/headers" || fail "$1: $program cannot be read"
    sed -nE "s/^\tDLL Name: (.*)$/$(basename "$program"): \1/p" "$work/headers" >>"$work/imports"
  done
  sort -o "$work/imports" "$work/imports"
  same "$1: what programs and libraries import" "$expected/imports.txt" "$work/imports"
}

# check_others WHAT PREFIX FOLDER: Microsoft's compiler is not at hand; what CMake would give it is.
check_others() {
  local what=$1 prefix=$2 folder=$3 library
  cat >"$folder/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Others LANGUAGES NONE)
set(MSVC TRUE)
find_package(TarnPst REQUIRED)
foreach(library TarnPst Tarnbase CatchingShim)
  get_target_property(place TarnPst::${library} IMPORTED_IMPLIB_RELEASE)
  file(COPY_FILE ${place} ${CMAKE_BINARY_DIR}/${library}.lib)
endforeach()
END
  quietly "$what: finding the .lib files by CMake" cmake -G Ninja -S "$folder" -B "$folder/others" \
    -DTarnPst_DIR="$prefix/lib/cmake/TarnPst"
  for library in TarnPst Tarnbase CatchingShim; do
    cmp "$folder/others/$library.lib" "$prefix/lib/$library.lib" >&2 ||
      fail "$what: CMake's $library.lib"
  done
}

# check_shim WHAT PREFIX FOLDER: by both import libraries, and built from its source.
check_shim() {
  local what=$1 prefix=$2 folder=$3 form
  local status=("$folder/shim/status.c" -std=c11 -municode "${warnings[@]}" -I"$prefix/include")
  # The header that is beside the source is not needed.
  rm "$folder/shim/catching-shim.h"
  quietly "$what: building the program that calls the shim" "$cross-gcc-posix" "${status[@]}" \
    -o "$folder/status-a.exe" "$prefix/lib/libCatchingShim.dll.a" "$prefix/lib/libTarnbase.dll.a"
  quietly "$what: building the program that calls the shim with the .lib files" \
    "$cross-gcc-posix" "${status[@]}" \
    -o "$folder/status-lib.exe" "$prefix/lib/CatchingShim.lib" "$prefix/lib/Tarnbase.lib"
  for form in a lib; do run_shim "$what, status-$form.exe" "$folder/status-$form.exe" "$wine"; done
  quietly "$what: configuring the program that calls the shim" cmake -G Ninja \
    -S "$folder/shim" -B "$folder/build-shim" --toolchain "$toolchain" \
    -DTarnPst_DIR="$prefix/lib/cmake/TarnPst" -DCMAKE_C_FLAGS="${warnings[*]}"
  quietly "$what: building the program that calls the shim by CMake" cmake --build "$folder/build-shim"
  run_shim "$what, CMake" "$folder/build-shim/status.exe" "$wine"

  mkdir "$folder/own"
  quietly "$what: building the shim" "$cross-g++-posix" -std=c++20 -O2 -static -shared \
    "${warnings[@]}" -DCATCHING_SHIM_BUILD -I"$prefix/include" "$folder/shim/catching-shim.cpp" \
    -o "$folder/own/CatchingShim.dll" "$prefix/lib/libTarnPst.dll.a"
  cp "$folder/status-a.exe" "$folder/own"
  run_shim "$what, a shim built from the source" "$folder/own/status-a.exe" "$wine"
}

# check_windows WHAT PREFIX FOLDER: builds and runs what lies below the prefix, in a new folder.
check_windows() {
  local what=$1 prefix=$2 folder=$3 pages flags wine_path=Z:$2/bin
  mkdir "$folder"
  cp -R "$prefix/doc/examples/." "$folder"
  check_imports "$what" "$prefix/bin"
  read_flags "$what" "$prefix/lib/pkgconfig"
  export WINEPATH=${wine_path//\//\\}

  quietly "$what: building the program in C" "$cross-gcc-posix" -static -std=c11 "${warnings[@]}" \
    -municode "$folder/c/pages.c" -o "$folder/pages.exe" "${flags[@]}"
  quietly "$what: building the program in C with the .lib files" \
    "$cross-gcc-posix" -std=c11 "${warnings[@]}" -municode "$folder/c/pages.c" \
    -o "$folder/pages-lib.exe" -I"$prefix/include" "$prefix/lib/TarnPst.lib" "$prefix/lib/Tarnbase.lib"
  for pages in pages.exe pages-lib.exe; do run_pages "$what, $pages" "$folder/$pages" "$wine"; done

  quietly "$what: building the smallest program" "$cross-gcc-posix" -static -std=c11 \
    "${warnings[@]}" -municode "$folder/embed/embed.c" -o "$folder/smallest.exe" "${flags[@]}"
  run_embed "$what" "$folder/smallest.exe" "$wine"

  quietly "$what: configuring the program in C++" cmake -G Ninja \
    -S "$folder/cpp" -B "$folder/build" \
    --toolchain "$toolchain" \
    -DTarnPst_DIR="$prefix/lib/cmake/TarnPst" \
    -DCMAKE_CXX_FLAGS="${warnings[*]}" -DCMAKE_EXE_LINKER_FLAGS=-static
  quietly "$what: building the program in C++" cmake --build "$folder/build"
  run_summary "$what" "$folder/build/summary.exe" "$wine"

  check_shim "$what" "$prefix" "$folder"
  check_others "$what" "$prefix" "$folder"
  # Beside its libraries it needs no search path; wine-run has one for those who give none.
  WINEPATH='C:\' run_tarnmail "$what" "$prefix/bin/tarnmail.exe" "$wine"
}

pack "$windows" 'TarnPst-*.zip'
zip=$package
mkdir "$work/zip"
(cd "$work/zip" && cmake -E tar xf "$zip") || fail "the .zip cannot be unpacked"
tree=$work/zip/$(basename "$zip" .zip)
check_tree "the .zip" "$tree" "$expected/zip-files.txt" doc/docs
check_notices "the .zip" "$tree/doc/copyright" "${parts[@]}" libgcc MinGW-w64 gdtoa winpthreads
check_pe "the .zip" "$tree/bin"/*
check_repeatable "$windows" "$zip"
check_windows "the .zip" "$tree" "$work/of zip"

quietly "installing $windows" cmake --install "$windows" --prefix "$work/windows installed"
check_tree "cmake --install for Windows" "$work/windows installed" "$expected/zip-files.txt" doc/docs
check_windows "cmake --install for Windows" "$work/windows installed" "$work/of windows"

echo "packages: ok: $(basename "$deb"), $(basename "$zip")"

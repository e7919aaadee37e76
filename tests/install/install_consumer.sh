#!/usr/bin/env bash
# Installs a qxi18n build tree into a scratch prefix, checks the installed layout, then builds
# and runs the consumer program against that prefix through the CMake package and through
# pkg-config. Any step that fails ends the test with a one-line reason.
set -euo pipefail

if [ $# -lt 7 ]; then
  echo "usage: $0 SOURCE_DIR BUILD_DIR CONSUMER_DIR WORK_DIR CMAKE GENERATOR CXX [SANITIZERS,...]" >&2
  exit 2
fi
source_dir=$1 build_dir=$2 consumer_dir=$3 work=$4 cmake=$5 generator=$6 cxx=$7 sanitize=${8:-}

fail() { echo "install_consumer: $*" >&2; exit 1; }
step() { echo "== $*"; }

# A sanitized library needs its runtime first in the program that loads it.
extra_flags=""
if [ -n "$sanitize" ]; then
  extra_flags="-fsanitize=$sanitize -fno-omit-frame-pointer"
fi

# The work directory belongs to this test alone; start from nothing so no old file can pass.
rm -rf -- "$work"
mkdir -p "$work"
prefix=$work/prefix

step "install into $prefix"
"$cmake" --install "$build_dir" --prefix "$prefix" >"$work/install.log" || {
  cat "$work/install.log"; fail "cmake --install failed"; }
prefix_real=$(cd "$prefix" && pwd -P)

step "check the installed layout"
for f in lib/cmake/qxi18n/qxi18nConfig.cmake lib/cmake/qxi18n/qxi18nConfigVersion.cmake \
         lib/cmake/qxi18n/qxi18nTargets.cmake lib/pkgconfig/qxi18n.pc; do
  [ -f "$prefix/$f" ] || fail "missing from the installed tree: $f"
done
for lib in qxi18n qxfoundation_filesystem qxtessera; do
  so=$prefix/lib/lib$lib.so
  [ -e "$so" ] || fail "missing from the installed tree: lib/lib$lib.so"
  soname=$(objdump -p "$so" | awk '$1 == "SONAME" { print $2 }')
  [ -n "$soname" ] && [ "$soname" != "lib$lib.so" ] || fail "lib$lib.so has no versioned SONAME"
  [ -e "$prefix/lib/$soname" ] || fail "missing from the installed tree: lib/$soname"
done
# Every exported header of the library and of both siblings is installed.
for root in "$source_dir/include" "$source_dir"/siblings/*/include; do
  while IFS= read -r header; do
    [ -f "$prefix/include/$header" ] || fail "header not installed: $header"
  done < <(cd "$root" && find . -name '*.hpp' | sed 's|^\./||')
done
if [ -e "$build_dir/bin/qxi18n" ]; then
  [ -x "$prefix/bin/qxi18n" ] || fail "the build tree has bin/qxi18n but the installed tree does not"
  # The tool finds the library beside it through its $ORIGIN run path, not through the build tree.
  resolved=$(ldd "$prefix/bin/qxi18n" | awk '$1 == "libqxi18n.so.0" { print $3 }')
  [ -n "$resolved" ] && [ "$(realpath "$resolved")" = "$(realpath "$prefix_real/lib/libqxi18n.so.0")" ] ||
    fail "the installed bin/qxi18n loads libqxi18n from '${resolved:-nowhere}'"
else
  echo "(no bin/qxi18n in the build tree: tool check skipped)"
fi

check_output() { # $1 how it was built, $2 the program's output
  local expected="install_path=$prefix_real"
  [ "$2" = "$expected" ] || fail "$1 consumer printed '$2', expected '$expected'"
}

step "consumer through find_package(qxi18n)"
cmake_build=$work/cmake-build
"$cmake" -S "$consumer_dir" -B "$cmake_build" -G "$generator" \
  -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
  -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
  -DCMAKE_CXX_FLAGS="$extra_flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$extra_flags" >"$work/configure.log" || {
  cat "$work/configure.log"; fail "the consumer did not configure"; }
found_dir=$(sed -n 's/^qxi18n_DIR:PATH=//p' "$cmake_build/CMakeCache.txt")
[ "$(cd "$found_dir" && pwd -P)" = "$prefix_real/lib/cmake/qxi18n" ] ||
  fail "find_package found qxi18n in '$found_dir', not in the scratch prefix"
"$cmake" --build "$cmake_build" -j1 || fail "the consumer did not build"
# The installed package must not point back into the source or build tree.
if grep -Fq -e "$source_dir/include" -e "$source_dir/siblings" -e "-I$build_dir" \
     "$cmake_build/compile_commands.json"; then
  fail "the consumer compiled against the project tree instead of the installed headers"
fi
output=$("$cmake_build/consumer") || fail "the CMake-built consumer failed"
check_output CMake-built "$output"

step "consumer through pkg-config"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
pc_flags=$(pkg-config --cflags --libs qxi18n) || fail "pkg-config does not know qxi18n"
# shellcheck disable=SC2086  # the flags are a list of words by design
"$cxx" -std=c++17 $extra_flags "$consumer_dir/main.cpp" $pc_flags -o "$work/consumer-pkgconfig" ||
  fail "the consumer did not build with: $pc_flags"
output=$(LD_LIBRARY_PATH="$prefix/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$work/consumer-pkgconfig") ||
  fail "the pkg-config-built consumer failed"
check_output pkg-config-built "$output"

echo "install_consumer: all checks passed"

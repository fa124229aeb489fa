#!/bin/bash
# Installs the tree, moves it elsewhere, and builds the embedding example there
# as a stranger would: with find_package, and again with pkg-config.
#
#   installed.sh BUILD-FOLDER C++-COMPILER
source "$(dirname "$0")/common.sh" "$1"
compiler=$2

cmake --install "$build" --prefix "$scratch/first" >/dev/null
mv "$scratch/first" "$scratch/prefix"
prefix=$scratch/prefix
make_archives

run_command() { "$prefix/bin/morvunp" extract "$1" -C "$2"; }
check_unpacker run_command

mkdir "$scratch/outside"
cp "$source/examples/unpack.cpp" "$scratch/outside"
cat >"$scratch/outside/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(outside CXX)
find_package(morvunp 0.1 CONFIG REQUIRED)
add_executable(unpack unpack.cpp)
target_link_libraries(unpack PRIVATE morvunp::morvunp)
END
cmake -S "$scratch/outside" -B "$scratch/outside/build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >"$scratch/log" &&
  cmake --build "$scratch/outside/build" >>"$scratch/log" 2>&1 ||
  fail "find_package: $(<"$scratch/log")"
check_unpacker "$scratch/outside/build/unpack"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name morvunp.pc)")
export PKG_CONFIG_PATH
# What pkg-config answers is quoted for a shell.
eval "flags=($(pkg-config --cflags --libs morvunp))"
"$compiler" -std=c++20 -o "$scratch/unpack" "$scratch/outside/unpack.cpp" "${flags[@]}" ||
  fail "pkg-config: the program cannot be built"
LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name libmorvunp.so)")
export LD_LIBRARY_PATH
check_unpacker "$scratch/unpack"

# Both tell whether RAR archives can be read, and so does the header.
has_rar=$(pkg-config --variable=has_rar morvunp)
find_rar=0
sed -i 's/CONFIG REQUIRED/CONFIG REQUIRED COMPONENTS RAR/' "$scratch/outside/CMakeLists.txt"
cmake -S "$scratch/outside" -B "$scratch/outside/build" >/dev/null 2>&1 && find_rar=1
header_rar=0
[[ -e $prefix/include/morvunp/rarunpacker.h ]] && header_rar=1
grep -q "MORVUNP_HAS_RAR $has_rar\$" "$prefix/include/morvunp/buildoptions.h" ||
  fail "the header tells something else of RAR than pkg-config: $has_rar"
[[ $find_rar$header_rar == "$has_rar$has_rar" ]] ||
  fail "RAR: find_package $find_rar, headers $header_rar, pkg-config $has_rar"

# Each public header stands on its own.
eval "flags=($(pkg-config --cflags morvunp))"
for folder in morvunp morvunp/platform; do
  (cd "$prefix/include" && ls "$folder"/*.h) | xargs -P 2 -I '{}' sh -c \
    'echo "#include \"{}\"" | "$0" -std=c++20 -Wall -Wextra -Werror -fsyntax-only -x c++ "$@" -' \
    "$compiler" "${flags[@]}" || fail "a header does not stand on its own"
done

# The window finds its library and its translations.
[[ -e $prefix/bin/morvunp-desktop ]] || exit 0
unset LD_LIBRARY_PATH
help() { LC_ALL=$1 QT_QPA_PLATFORM=offscreen "$prefix/bin/morvunp-desktop" --help 2>/dev/null; }
[[ $(help C.UTF-8) == *"Shows and unpacks"* ]] || fail "the window does not start"
[[ -z $(find "$prefix" -name '*.qm') || $(help de_DE.UTF-8) == *"Zeigt und entpackt"* ]] ||
  fail "the translation is not found"

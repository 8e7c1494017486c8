#!/usr/bin/env bash
# Installs a build, moves the installation and uses it from another folder: nothing of the build may be needed.
# Usage: installation_test.sh BUILD_FOLDER EXAMPLES
set -euo pipefail
build=$1
examples=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
cd "$work"

moved/bin/marovine get FG_WIDTH | grep -qx 1024
# The environment switches the dispatcher on here, not the command's own option, which says where it lies.
refused=$(MAROVINE_LOG_LEVEL=4 moved/bin/marovine set FG_CAMSTATUS=1 2>&1) || true
grep -q "trying to set read-only" <<<"$refused" || {
    echo "the installed applet does not find its dispatcher: $refused"
    exit 1
}
moved/bin/marovine xml >first.xml
"$build/marovine" xml >second.xml
cmp first.xml second.xml
cmp moved/share/marovine/Marovine.hap "$build/Marovine.hap"
man -l moved/share/man/man1/marovine-grab.1 2>/dev/null | grep -q "marovine grab" || ! command -v man >/dev/null

for header in moved/include/marovine/*.h; do
    c++ -std=c++20 -fsyntax-only -Imoved/include -include "marovine/${header##*/}" -x c++ /dev/null
done

# ---- programs that are built against it ----

export PKG_CONFIG_PATH=$work/moved/lib/pkgconfig
applet=$(pkg-config --variable=applet marovine)
read -ra options <<<"$(pkg-config --cflags --libs marovine) -Wl,-rpath,$(pkg-config --variable=libdir marovine)"
for host in host grab board; do
    cc -std=c90 -pedantic -Werror "$examples/$host.c" "${options[@]}" -o $host
done
./host "$applet" | grep -q "FG_WIDTH is 2048"
./board "$applet" | grep -q "input 3 rose"
./grab "$applet" belt.ppm | grep -q "picture 3: 1024 x 256"
[ "$(wc -c <belt.ppm)" -eq $((16 + 1024 * 256 * 3)) ]

mkdir project
cat >project/CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Uses LANGUAGES CXX)
find_package(Marovine 2.1 REQUIRED)
add_executable(uses_board uses_board.cpp)
target_link_libraries(uses_board PRIVATE Marovine::board)
add_executable(uses_client uses_client.cpp)
target_link_libraries(uses_client PRIVATE Marovine::client)
END
cat >project/uses_board.cpp <<'END'
#include <marovine/Control.h>
int main() {
    GXdevice* board = virtualboard::insertBoard();
    virtualboard::Control(board).setClockManual();
    virtualboard::removeBoard(board);
}
END
cat >project/uses_client.cpp <<'END'
#include <client/Client.h>
#include <client/Grabber.h>
#include <client/VirtualBoard.h>
#include <iostream>
using namespace marovine::host;
int main() {
    Applet applet(Library::load(), std::make_unique<VirtualBoard>());
    boardOf(applet).setClockMode(virtualboard::ClockMode::AsFastAsPossible);
    applet.set("FG_WIDTH", std::uint32_t{512});
    std::cout << firstPicture(applet).width << std::endl;
}
END
cmake -S project -B project/build -DCMAKE_PREFIX_PATH="$work/moved" >cmake.log || cat cmake.log
cmake --build project/build >cmake.log || cat cmake.log
project/build/uses_board
project/build/uses_client | grep -qx 512

# ---- and gone again ----

cmake --install "$build" --prefix "$work/second" >/dev/null
cmake --build "$build" --target uninstall >/dev/null
[ -z "$(find "$work/second" -type f -o -type l)" ]

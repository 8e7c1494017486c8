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

cat >uses_control.cpp <<'END'
#include <marovine/Control.h>
#include <marovine/VirtualBoard.h>
int main() {
    GXdevice* board = virtualboard::insertBoard();
    virtualboard::Control(board).setClockManual();
    virtualboard::removeBoard(board);
}
END
for header in moved/include/marovine/*.h; do
    c++ -std=c++20 -fsyntax-only -Imoved/include -include "marovine/${header##*/}" -x c++ /dev/null
done
options=(-Imoved/include -Lmoved/lib64 -Wl,-rpath,"$work/moved/lib64")
for host in host grab; do
    cc -std=c90 -pedantic -Werror "${options[@]}" "$examples/$host.c" -lvirtualboard -ldl -o $host
done
./host moved/lib64/libMarovine.so | grep -q "FG_WIDTH is 2048"
./grab moved/lib64/libMarovine.so belt.ppm | grep -q "picture 3: 1024 x 256"
[ "$(wc -c <belt.ppm)" -eq $((16 + 1024 * 256 * 3)) ]
c++ -std=c++20 "${options[@]}" uses_control.cpp -lvirtualboard -o uses_control
./uses_control

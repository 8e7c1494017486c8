#!/usr/bin/env bash
# The library exports exactly what its header declares, which every common standard compiles, needs the runtimes by their plain names, and lets an
# installation's own libraries win; nothing built beside it looks for libraries elsewhere; what is shipped is hardened.
# Usage: exports_test.sh LIBRARY HEADER [HARDENED...]
set -euo pipefail
library=$1
header=$2
status=0

fail() {
    echo "FAILED: $*" >&2
    status=1
}

declared=$(tr '\n' ' ' <"$header" | grep -oE '\b(Std_entry|Info|(Fg|Shad)_[A-Za-z]+) ?\(' | tr -d '( ' | sort -u)
exported=$(nm -D --defined-only "$library" | awk '{print $3}' | sort -u)
[ "$(wc -w <<<"$declared")" -ge 30 ] || fail "the header declares too few functions: the test reads it wrongly"
diff <(echo "$declared") <(echo "$exported") || fail "exports (right) differ from the header's functions (left)"

for standard in c90 c99 c11 c17 c++11 c++14 c++17 c++20; do
    language=c && [[ $standard == c++* ]] && language=c++
    for flag in -DMAROVINE_NO_CONSTANTS -UMAROVINE_NO_CONSTANTS; do
        gcc -x "$language" -std="$standard" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "$flag" "$header" ||
            fail "does not compile as $standard"
    done
done

dynamic=$(readelf -d "$library")
for name in libhaprt.so libtavr_hw.so; do
    grep -qF "Shared library: [$name]" <<<"$dynamic" || fail "does not need $name"
done
grep -qE 'Shared library: \[lib(fglib5|virtualboard|common-logging-dispatcher)' <<<"$dynamic" &&
    fail "needs a library that it must open by name, or the virtual board"
grep -q '(RUNPATH)' <<<"$dynamic" || fail "has no RUNPATH"
grep -q '(RPATH)' <<<"$dynamic" && fail "has an RPATH"

# An empty element of a run path is the current folder, where anybody may have put a library.
astray=$(find "$(dirname "$library")" -name CMakeFiles -prune -o -type f -perm -u+x -exec readelf -d {} + 2>/dev/null |
    grep -E '\(R(UN)?PATH\)' | grep -vE '\[\$ORIGIN(:\$ORIGIN/[^]:]+)*\]') &&
    fail "run paths that lead astray: $astray"

for file in "${@:3}"; do
    parts=$(readelf -lW "$file") dynamic=$(readelf -d "$file") symbols=$(readelf -sW --dyn-syms "$file")
    grep -q GNU_RELRO <<<"$parts" && grep -q BIND_NOW <<<"$dynamic" || fail "$file: what the loader wrote stays writable"
    grep -q __stack_chk_fail <<<"$symbols" || fail "$file: no stack protector"
done
exit $status

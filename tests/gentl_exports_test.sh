#!/usr/bin/env bash
# The producer exports exactly the functions of its header, and stands as firm as what is shipped beside it.
# Usage: gentl_exports_test.sh PRODUCER HEADER
set -euo pipefail
declared=$(tr '\n' ' ' <"$2" | grep -oE 'GC_ERROR [A-Za-z]+\(' | sed 's/GC_ERROR //; s/(//' | sort -u)
exported=$(nm -D --defined-only "$1" | awk '{print $3}' | sort -u)
[ "$(wc -w <<<"$declared")" -eq 57 ] || { echo "the header is read wrongly: $declared"; exit 1; }
diff <(echo "$declared") <(echo "$exported")
# The command's check looks for the same functions.
checked=$(sed -n '/kFunctions{/,/};/p' "$(dirname "$0")/../command/GentlCheck.cpp" | grep -oE '"[A-Za-z]+"' | tr -d '"' | sort -u)
diff <(echo "$declared") <(echo "$checked")
echo "#include \"$2\"" | gcc -x c -std=c99 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -

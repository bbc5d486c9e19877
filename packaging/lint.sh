#!/usr/bin/env bash
# Looks for bugs and clumsiness without running anything: clang-tidy with the reasons in .clang-tidy,
# and cppcheck. Ends with status 1 when either has found something.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

# Two things are for the night, because they cost half of the time: states of a function that the
# analyzer meets after this many, and checks that are slow beside what they find, most of which the
# compiler warns of as well.
states=8000
checks=-misc-definitions-in-headers,-misc-static-assert,-misc-unused-parameters
checks+=,-misc-unused-using-decls,-bugprone-forward-declaration-namespace,-bugprone-infinite-loop
checks+=,-bugprone-suspicious-string-compare,-bugprone-undelegated-constructor
if [ "${1:-}" = --deep ]; then
    states=225000 checks=
    shift
fi
if [ $# -ne 1 ] || [ ! -e "$1/compile_commands.json" ]; then
    echo "Usage: packaging/lint.sh [--deep] BUILD_DIRECTORY   (one that has been configured)" >&2
    exit 2
fi
build=$1

mapfile -t sources < <(find src platform tools -name '*.cpp' | sort)
found=0

# The toolkits' macros are known through cppcheck's own library file. Members that a C record's
# initialiser has set are taken for uninitialised, which the compiler knows better.
cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability --inline-suppr \
    --std=c++17 --language=c++ --library=gtk -j "$(nproc)" \
    -I platform/include -I platform/linux -I src -I src/player \
    --suppress=passedByValue --suppress=uninitDerivedMemberVar \
    --suppress=missingIncludeSystem "${sources[@]}" || found=1
echo "cppcheck: ${#sources[@]} files looked at"

printf '%s\0' "${sources[@]}" |
    xargs -0 -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet "--checks=$checks" \
        --extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang "--extra-arg=max-nodes=$states" \
        2>/dev/null || found=1
echo "clang-tidy: ${#sources[@]} files looked at"

if [ $found -ne 0 ]; then
    echo "lint.sh: something was found, see above" >&2
fi
exit $found

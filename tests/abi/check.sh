#!/usr/bin/env bash
# Compares what the library offers to programs that were built against it with what is checked in here: the exported
# symbols and, on Linux, the layouts and virtual tables of all types in its interface. What the DLL for Windows needs
# beside it has to be part of that system.
#   tests/abi/check.sh linux             builds the library in build/abi, unoptimised, for its debug information
#   tests/abi/check.sh windows           takes the DLL of build/windows
#   tests/abi/check.sh SYSTEM --accept   makes the library's present state the one that is checked in
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
work=$root/build/abi
system=$1
accept=${2:-}
library=$work/lib/libks_graph.so
[ "$system" != windows ] || library=$root/build/windows/bin/ks_graph.dll

tell_how_to_accept()
{
    echo "FAILED: $1." >&2
    echo "Programs built against the last state may no longer run. If that is meant, say so in CHANGELOG.md, raise the" >&2
    echo "version as CONTRIBUTING.md says, and accept it: tests/abi/check.sh $system --accept" >&2
    exit 1
}

build_for_linux()
{
    cmake -S "$root" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="-O0 -g" \
        -DKS_GRAPH_BUILD_TESTS=OFF -DKS_GRAPH_BUILD_EXAMPLES=OFF >"$work.log" 2>&1 &&
        cmake --build "$work" >>"$work.log" 2>&1 && return
    cat "$work.log" >&2
    exit 1
}

# Without the addresses: one name to a line, as it is written in C++.
exported_symbols()
{
    if [ "$system" = windows ]; then
        x86_64-w64-mingw32-objdump -p "$library" |
            sed -n 's/^\t*\[ *[0-9]*\] \(\+base\[ *[0-9]*\] [0-9a-f]* \)\{0,1\}\(_Z.*\)$/\2/p' | c++filt | LC_ALL=C sort
    else
        nm -D --defined-only "$library" | cut -d ' ' -f 2- | sed 's/^[WVu] /weak /; s/^[TBDR] //' | c++filt |
            LC_ALL=C sort
    fi
}

check_symbols()
{
    local expected=$here/exported_symbols.$system.txt
    [ "$accept" != --accept ] || exported_symbols >"$expected"
    [ -s "$expected" ] || tell_how_to_accept "there is no list of the exported symbols"
    diff -u "$expected" <(exported_symbols) >&2 || tell_how_to_accept "the exported symbols have changed"
    echo "abi: $(wc -l <"$expected") exported symbols of $system are as they were"
}

# Only what the installed headers declare; the internals may change as they like.
describe_types()
{
    cmake --install "$work" --prefix "$work/installed" >>"$work.log"
    abidw --headers-dir "$work/installed/include" --drop-private-types --no-show-locs --no-corpus-path \
        --no-comp-dir-path --no-elf-needed --out-file "$1" "$library"
}

check_types()
{
    local expected=$here/types.linux.abi.gz
    describe_types "$work/present.abi"
    [ "$accept" != --accept ] || gzip -9n <"$work/present.abi" >"$expected"
    gzip -dc "$expected" >"$work/expected.abi"
    abidiff --no-show-locs "$work/expected.abi" "$work/present.abi" >&2 ||
        tell_how_to_accept "a type of the interface has changed"
    echo "abi: the types of $system are as they were"
}

check_imports()
{
    local expected="KERNEL32.dll msvcrt.dll" imported
    imported=$(x86_64-w64-mingw32-objdump -p "$library" | sed -n 's/^\tDLL Name: //p' | LC_ALL=C sort | xargs)
    if [ "$imported" != "$expected" ]; then
        echo "FAILED: ${library##*/} needs $imported instead of just $expected." >&2
        exit 1
    fi
    echo "abi: ${library##*/} needs no other libraries than $expected"
}

if [ "$system" = linux ]; then
    mkdir -p "$work"
    build_for_linux
    check_types
fi
check_symbols
[ "$system" != windows ] || check_imports

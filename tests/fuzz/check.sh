#!/usr/bin/env bash
# Builds the fuzzers of this folder in build/fuzz and runs them, one after the other.
#   tests/fuzz/check.sh                             replays what is checked in, then fuzzes for a minute in all
#   tests/fuzz/check.sh --long [SECONDS [NAME...]]  fuzzes each, or those named, for an hour or so many seconds, and
#                                                   keeps in build/fuzz/found the inputs that went new ways
#   tests/fuzz/check.sh --merge                     checks in, of those and the old seeds, the fewest that go all ways
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$root/build/fuzz
found=$build/found
findings=$build/findings
seconds_of_short_form=60

export ASAN_OPTIONS=strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1

build_fuzzers()
{
    mkdir -p "$build" "$findings"
    { cd "$root" && cmake --preset fuzz && cmake --build --preset fuzz; } >"$build/build.log" 2>&1 && return
    cat "$build/build.log" >&2
    exit 1
}

all_names()
{
    local source
    for source in "$here"/fuzz_*.cpp; do basename "$source" .cpp; done
}

# seeds NAME: the folders with its inputs.
seeds()
{
    local folder
    for folder in "$here/corpus/$1" "$here/regressions/$1" "$root/tests/data/layout"; do
        [[ $folder != */data/layout || $1 == fuzz_layout_* ]] || continue
        [ ! -d "$folder" ] || echo "$folder"
    done
}

# No sane use of these inputs takes so long or so much memory at once.
run_fuzzer()
{
    local name=$1 dictionary=$here/$1.dict
    shift
    [ ! -f "$dictionary" ] || set -- "-dict=$dictionary" "$@"
    "$build/tests/fuzz/$name" -timeout=60 -malloc_limit_mb=64 "-artifact_prefix=$findings/$name-" \
        -print_final_stats=1 -print_funcs=0 "$@" >"$build/$name.log" 2>&1
}

tell_finding()
{
    echo "FAILED: $1 has found something. Once it is mended, keep the input in tests/fuzz/regressions/$1." >&2
    grep -v '^#[0-9]' "$build/$1.log" | tail -n 60 >&2
    return 1
}

replay()
{
    local folders
    mapfile -t folders < <(seeds "$1")
    run_fuzzer "$1" -runs=0 "${folders[@]}" || tell_finding "$1"
    echo "fuzz: $1: $(find "${folders[@]}" -type f | wc -l) inputs replayed"
}

# fuzz NAME SECONDS FOLDER: starts from the seeds and puts inputs that go new ways into the folder.
fuzz()
{
    local name=$1 folders result="no finding"
    mapfile -t folders < <(seeds "$1")
    mkdir -p "$3"
    run_fuzzer "$name" -seed=1 -max_len=4096 "-max_total_time=$2" "$3" "${folders[@]}" || result="A FINDING"
    sed -n 's/^stat::number_of_executed_units: *//p' "$build/$name.log" | tail -n 1 |
        sed "s/.*/fuzz: $name: & executions in $2 seconds, $(coverage "$name"), $result/"
    [ "$result" = "no finding" ] || tell_finding "$name"
}

coverage()
{
    sed -n 's/^#.* cov: \([0-9]*\) ft: \([0-9]*\) .*/coverage of \1 edges, \2 features/p' "$build/$1.log" | tail -n 1
}

short_form()
{
    local name names
    mapfile -t names < <(all_names)
    rm -rf "$build/short"
    for name in "${names[@]}"; do
        replay "$name"
        fuzz "$name" $((seconds_of_short_form / ${#names[@]})) "$build/short/$name"
    done
}

long_form()
{
    local seconds=${1:-3600} name names failed=0
    shift || true
    names=("$@")
    [ ${#names[@]} -gt 0 ] || mapfile -t names < <(all_names)
    for name in "${names[@]}"; do
        fuzz "$name" "$seconds" "$found/$name" || failed=1
    done
    return "$failed"
}

# The fewest inputs that reach every edge: how often each was passed is left to the fuzzers to find out again.
merge()
{
    local name folders
    for name in $(all_names); do
        mapfile -t folders < <(seeds "$name")
        [ ! -d "$found/$name" ] || folders+=("$found/$name")
        rm -rf "$build/merged"
        mkdir -p "$build/merged" "$here/corpus"
        run_fuzzer "$name" -set_cover_merge=1 -use_counters=0 "$build/merged" "${folders[@]}" || tell_finding "$name"
        rm -rf "$here/corpus/$name"
        mv "$build/merged" "$here/corpus/$name"
        echo "fuzz: $name: $(find "$here/corpus/$name" -type f | wc -l) seeds"
    done
}

build_fuzzers
case ${1:-} in
'') short_form ;;
--long) shift && long_form "$@" ;;
--merge) merge ;;
*) echo "Unknown: $1" >&2 && exit 1 ;;
esac

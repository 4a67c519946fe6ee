#!/usr/bin/env bash
# Runs the tests of the library on a build that counts, and demands that they reach every line of lib/ and both sides
# of every branch, but for the lines that a comment "// coverage: <why it cannot happen>" takes out, at their end or
# on the line before.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$root/build/coverage
work=$build/report
programs=(foundation_tests ks_graph_tests allocation_tests)

# quietly COMMAND...: shows what the command prints only if it fails.
quietly()
{
    "$@" >"$work/check.log" 2>&1 && return
    cat "$work/check.log" >&2
    echo "FAILED: $*" >&2
    exit 1
}

# The compiler, the profiles and their reader have to be of one version.
version=$(clang++ -dumpversion | cut -d . -f 1)
for tool in llvm-profdata-$version llvm-cov-$version; do
    command -v "$tool" >/dev/null || { echo "FAILED: there is no $tool" >&2; exit 1; }
done

rm -rf "$work"
mkdir -p "$work"
cd "$root"
quietly cmake --preset coverage
quietly cmake --build --preset coverage --target "${programs[@]}"

# Each program by itself: a function that only one of them calls would not fit the profile of them all.
for program in "${programs[@]}"; do
    # %p: a test whose program is meant to die runs it in a process of its own.
    LLVM_PROFILE_FILE=$work/$program-%p.profraw quietly "$build/tests/$program" --gtest_brief=1
    quietly "llvm-profdata-$version" merge -o "$work/$program.profdata" "$work/$program"-*.profraw
    shown=(-instr-profile "$work/$program.profdata" "$build/tests/$program")
    "llvm-cov-$version" export -format=lcov "${shown[@]}" >"$work/$program.lcov"
    "llvm-cov-$version" export -format=text -skip-functions -skip-expansions "${shown[@]}" >"$work/$program.json"
    "llvm-cov-$version" show -show-branches=count -show-instantiations=false "${shown[@]}" >"$work/$program.txt"
done
python3 "$here/judge.py" "$root/lib" "$work"

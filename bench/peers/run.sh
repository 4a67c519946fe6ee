#!/usr/bin/env bash
# Measures ks_graph beside other graph libraries and beside a plain store of the same information:
#   bench/peers/run.sh [NODES...]    graphs of that many nodes; 1000 10000 100000 1000000 without any
# Builds the programs, runs them in turn on one core, and prints a table of the medians. What was measured stays in
# build/bench/peers: results.csv, and the table as results.txt and results.md.
# CORE, REPEATS and BUDGET choose the core (1), how often each program runs (3), and the seconds for one workload (5).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
programs=$root/build/bench/bench/peers
results=$root/build/bench/peers
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(1000 10000 100000 1000000)

source "$root/bench/build.sh"

# One line for each workload, with the program's name in front. The notes of a workload that was stopped go to the
# standard error.
measure()
{
    local program=$1 n=$2
    taskset -c "${CORE:-1}" "$programs/bench_$program" "$n" "${BUDGET:-5}" 2> >(sed "s/^/$program: /" >&2) |
        sed "s/^/$program,/"
}

measure_all()
{
    local repeat n program
    for ((repeat = 1; repeat <= ${REPEATS:-3}; repeat++)); do
        for n in "${sizes[@]}"; do
            for program in ks_graph ks_graph_derived floor floor_stepwise floor_ordered cgraph boost lemon lemon_smart; do
                measure "$program" "$n"
            done
        done
    done
}

build_benchmarks "$root" "$results"
measure_all >"$results/results.csv"
"$here/table.py" --markdown "$results/results.csv" >"$results/results.md"
"$here/table.py" "$results/results.csv" | tee "$results/results.txt"

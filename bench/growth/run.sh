#!/usr/bin/env bash
# Measures how the costs of the library grow with the graph, and draws them:
#   bench/growth/run.sh [NODES...]    graphs of that many nodes, of 1000 10000 100000 1000000; all without any
# Builds the program and runs it on one core. What was measured stays in build/bench/growth: results.json, the picture
# as performance.svg, and the table as growth.md. CORE and REPEATS choose the core (1) and how often each workload runs
# (3).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
results=$root/build/bench/growth
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(1000 10000 100000 1000000)

source "$root/bench/build.sh"

build_benchmarks "$root" "$results" bench_growth
taskset -c "${CORE:-1}" "$root/build/bench/bench/growth/bench_growth" \
    --benchmark_filter="/($(IFS='|' && echo "${sizes[*]}"))/" --benchmark_repetitions="${REPEATS:-3}" \
    --benchmark_out="$results/results.json" --benchmark_out_format=json >&2
export PYTHONDONTWRITEBYTECODE=1
"$here/chart.py" "$results/results.json" >"$results/performance.svg"
"$here/table.py" "$results/results.json" | tee "$results/growth.md"
echo "The picture is $results/performance.svg"

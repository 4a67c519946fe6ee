#!/usr/bin/env bash
# Runs random sequences of operations against the library and against a naive model of it, and tells how often each kind
# of operation occurred and had an effect. Needs build/release (cmake --preset release && cmake --build --preset release).
#   tests/model/check.sh          300 seeds
#   tests/model/check.sh --long   100,000 seeds of 1,100 operations each
#   --seeds N, --operations N (of each seed), --first-seed N, --jobs N (processes at the same time) change the numbers.
# A seed that fails is shrunk to a sequence for tests/model/kept.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$root/build/model
program=$root/build/release/tests/model_tests
seeds=300
operations=1000
first_seed=1
jobs=1

while [ $# -gt 0 ]; do
    case $1 in
    --long) seeds=100000 operations=1100 ;;
    --seeds) seeds=$2 && shift ;;
    --operations) operations=$2 && shift ;;
    --first-seed) first_seed=$2 && shift ;;
    --jobs) jobs=$2 && shift ;;
    *) echo "There is no option $1" >&2 && exit 1 ;;
    esac
    shift
done
block=$((seeds < 1000 * jobs ? (seeds + jobs - 1) / jobs : 1000))
last_seed=$((first_seed + seeds - 1))

# run_block FIRST: one process for the seeds from there on. A crash is run again, in a way that can be shrunk.
run_block()
{
    local first=$1 log=$work/$1.log count crashed
    count=$((first + block - 1 > last_seed ? last_seed - first + 1 : block))
    if MODEL_FIRST_SEED=$first MODEL_SEEDS=$count MODEL_OPERATIONS=$operations \
        MODEL_STATISTICS=$work/$first.statistics \
        "$program" '--gtest_filter=Model.*' >"$log" 2>&1; then
        echo "seeds $first to $((first + count - 1)) are done" >&2
        return
    fi
    cat "$log" >&2
    crashed=$(sed -n 's/.*MODEL_FIRST_SEED=\([0-9]*\).*/\1/p' "$log" | head -n 1)
    [ -z "$crashed" ] || MODEL_FIRST_SEED=$crashed MODEL_SEEDS=1 MODEL_OPERATIONS=$operations MODEL_IN_CHILD=1 \
        "$program" '--gtest_filter=Model.*' >&2 || true
    return 255 # xargs starts no other block
}

# The table goes to the standard error output, the line of the check to the standard output.
add_up()
{
    LC_ALL=C awk -v seconds="$1" '
        $1 == "seeds" { seeds += $2 }
        $1 == "seconds" { work += $2 }
        NF == 4 {
            if (!($1 in tried)) order[++kinds] = $1
            tried[$1] += $2; possible[$1] += $3; effective[$1] += $4
            all += $2; done += $3; changed += $4
        }
        END {
            table = "cat >&2"
            printf "%-26s %12s %12s %12s %9s\n", "operation", "tried", "possible", "effective", "of them" | table
            for (i = 1; i <= kinds; ++i) {
                kind = order[i]
                printf "%-26s %12d %12d %12d %8.1f%%\n", kind, tried[kind], possible[kind], effective[kind],
                    possible[kind] ? 100 * effective[kind] / possible[kind] : 0 | table
                if (!effective[kind]) idle = idle " " kind
            }
            close(table)
            if (idle != "" && done >= 100000) {
                print "FAILED: these operations never had an effect:" idle | table
                exit 1
            }
            printf "model: %d operations of %d seeds (%d tried, %d effective) in %d s (%.1f us each) are equal\n",
                done, seeds, all, changed, seconds, 1e6 * work / all
        }' "$work"/*.statistics
}

rm -rf "$work"
mkdir -p "$work"
export root work program operations block last_seed
export -f run_block
SECONDS=0
seq "$first_seed" "$block" "$last_seed" | xargs -P "$jobs" -I{} bash -c 'run_block {}'
add_up "$SECONDS"

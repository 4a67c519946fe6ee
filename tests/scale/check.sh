#!/usr/bin/env bash
# Builds one large scene, asks and changes it, and checks the answers, the time it takes being told, and that the
# memory stays below 4 GiB. Builds the program in build/release.
#   tests/scale/check.sh          100,000 nodes
#   tests/scale/check.sh --long   a million nodes with three million pins and two million connections
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
log=$root/build/scale.log
nodes=100000
[ "${1:-}" != --long ] || nodes=1000000

mkdir -p "$root/build"
if ! (cd "$root" && cmake --preset release && cmake --build --preset release --target scale) >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
exec "$root/build/release/tests/scale" "$nodes"

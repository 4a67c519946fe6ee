#!/usr/bin/env bash
# Breaks the library on purpose, in copies, and demands that the tests notice; see mutate.py.
#   tests/mutation/check.sh          50 places, chosen by a fixed seed
#   tests/mutation/check.sh --long   all places; goes on where it was stopped
# Those that survivors.txt says live are tried with --survivors alone. Also --seed SEED, --jobs COUNT, --only FILE and
# --quick, a first look.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
places=50
arguments=()
for argument in "$@"; do
    if [ "$argument" = --long ]; then places=0; else arguments+=("$argument"); fi
done
PYTHONDONTWRITEBYTECODE=1 exec python3 "$here/mutate.py" --places "$places" "${arguments[@]}"

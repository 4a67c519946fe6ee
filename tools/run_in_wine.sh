#!/usr/bin/env bash
# Runs a Windows program under Wine, with a Wine prefix of this project's own beside the builds.
#   tools/run_in_wine.sh PROGRAM.exe [ARGUMENT...]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${KS_GRAPH_WINEPREFIX:-$root/build/wine}
export WINEDEBUG=-all
export LC_ALL=C.UTF-8 # Wine takes the names of files to be in the encoding of the locale
mkdir -p "$WINEPREFIX"
exec wine "$@"

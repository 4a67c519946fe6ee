#!/usr/bin/env bash
# Makes the site of the pages and the headers in build/docs, and checks that its links lead somewhere. Installs what is missing
# first.
set -euo pipefail
cd "$(dirname "$0")/.."

source tools/require_packages.sh
require_packages doxygen graphviz >&2

rm -rf build/docs
mkdir -p build

# Headers that are not installed are of no use to a host.
internal_headers()
{
    local header
    for header in lib/*/*.h; do
        grep -qF " ${header#lib/}" lib/CMakeLists.txt || printf '%s ' "$header"
    done
}

{ cat docs/Doxyfile; echo "EXCLUDE = $(internal_headers)"; } | doxygen - >&2
echo "passed: the site is made without a warning"

cd build/docs
lost=0
while read -r file; do
    [ -e "$file" ] || { echo "a page links to $file, which is not there" >&2; lost=1; }
done < <(grep -ohE '(href|src)="[^"#:]+["#]' ./*.html | sed -E 's/^[a-z]+="//; s/["#]$//' | sort -u)
[ "$lost" -eq 0 ] || exit 1
echo "passed: every link of the site leads somewhere"

# Doxygen leaves a link whose text goes over the end of a line, and much behind it, as it stands.
if grep -nE '@ref|@code|&lt;(tt|table)&gt;' ./md_*.html index.html | cut -c1-200 >&2; then
    exit 1
fi
echo "passed: every page is laid out to its end"
echo "open build/docs/index.html" >&2

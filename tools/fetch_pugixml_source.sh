#!/usr/bin/env bash
# Puts pugixml's sources into a folder, unless they are there: Debian has no build of it for Windows.
#   tools/fetch_pugixml_source.sh FOLDER
# They come from the archives that this machine installs from, whose own lists stay as they are.
set -euo pipefail

[ $# -eq 1 ] || { echo "usage: $0 FOLDER" >&2; exit 1; }
folder=$1
[ ! -f "$folder/src/pugixml.cpp" ] || exit 0

mkdir -p "$(dirname "$folder")"
work=$(mktemp -d "$(cd "$(dirname "$folder")" && pwd)/pugixml.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"/{archives,lists/partial,cache/archives/partial,download,unpacked}

apt=(apt-get -qq
    -o Dir::Etc::sourcelist=/dev/null
    -o "Dir::Etc::sourceparts=$work/archives"
    -o "Dir::State::lists=$work/lists"
    -o "Dir::Cache=$work/cache"
    -o APT::Sandbox::User=root)

# The archives of packages, in either of the two forms that they may be listed in, as archives of sources.
list_archives()
{
    local list
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$list" ] || continue
        sed -n 's/^deb[[:space:]]/deb-src /p' "$list" >>"$work/archives/$(basename "$list")"
    done
    for list in /etc/apt/sources.list.d/*.sources; do
        [ -f "$list" ] || continue
        sed 's/^types:.*/Types: deb-src/I' "$list" >"$work/archives/$(basename "$list")"
    done
}

download()
{
    list_archives
    "${apt[@]}" update || true # one of them may have no sources at all
    cd "$work/download" &&
        "${apt[@]}" source --download-only pugixml
}

if ! (download) >"$work/log" 2>&1; then
    cat "$work/log" >&2
    echo "The sources of pugixml are not to be had from this machine's package archives." >&2
    exit 1
fi
tar -xf "$work"/download/pugixml_*.orig.tar.* -C "$work/unpacked" --strip-components=1
[ -f "$work/unpacked/src/pugixml.cpp" ] || { echo "pugixml.cpp is not among the sources of pugixml." >&2; exit 1; }
mv -T "$work/unpacked" "$folder"

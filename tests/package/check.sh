#!/usr/bin/env bash
# Installs the library and makes its packages, unpacks them elsewhere, and builds and runs the project in this folder
# against each of them, as a user would.
#   tests/package/check.sh linux   needs build/release   (cmake --preset release && cmake --build --preset release)
#   tests/package/check.sh windows needs build/windows   (likewise)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$root/build/package
log=$work/check.log

# quietly COMMAND...: shows what the command prints only if it fails.
quietly()
{
    "$@" >"$log" 2>&1 && return
    cat "$log" >&2
    echo "FAILED: $*" >&2
    exit 1
}

# consume NAME USE [CMAKE-ARGUMENT...]: builds the consumer and runs it.
consume()
{
    local name=$1 use=$2 build=$work/consumer
    shift 2
    rm -rf "$build"
    quietly cmake -S "$root/tests/package" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release "-DUSE=$use" "$@"
    quietly cmake --build "$build" --target consumer
    quietly ctest --test-dir "$build" --no-tests=error --tests-regex '^consumer$' --output-on-failure
    echo "package: the consumer of $name runs"
}

# Both ways to find the package that is somewhere in a folder.
consume_installed()
{
    local name=$1 config
    config=$(dirname "$(find "$2" -name ks_graph.pc)")
    consume "$name, by CMake" package "-DCMAKE_PREFIX_PATH=$(cd "$config/../.." && pwd)"
    PKG_CONFIG_PATH=$config consume "$name, by pkg-config" pkg-config
}

# block LANGUAGE: the first block of the README in that language.
block()
{
    awk -v mark="\`\`\`$1" '/^```/ && inside { exit } inside; $0 == mark { inside = 1 }' "$root/README.md"
}

# consume_as_the_readme_tells PREFIX: its project, with its first program, prints what it says.
consume_as_the_readme_tells()
{
    local project=$work/readme
    mkdir "$project"
    block cmake >"$project/CMakeLists.txt"
    block cpp >"$project/main.cpp"
    block text >"$project/expected"
    quietly cmake -G Ninja -S "$project" -B "$project/build" "-DCMAKE_PREFIX_PATH=$1"
    quietly cmake --build "$project/build"
    quietly diff "$project/expected" <("$project/build/editor")
    echo "package: the project of the README runs"
}

# The pages link the headers where they are in the sources.
links_lead_somewhere()
{
    local page target
    find "$1" -name '*.md' | while read -r page; do
        sed -n 's/](\(\(\.\.\/\)*[A-Za-z_]*\(\/[A-Za-z_.-]*\)*\.[a-z]*\)/\n](\1\n/gp' "$page" |
            sed -n 's/^](//p' | while read -r target; do
            [[ $target == ../lib/* ]] || quietly test -e "$(dirname "$page")/$target"
        done
    done
    echo "package: the links of the installed pages lead somewhere"
}

# package BUILD GENERATOR PATTERN: makes the package and prints its path.
package()
{
    local build=$1 generator=$2 pattern=$3
    quietly cpack --config "$build/CPackConfig.cmake" -G "$generator" -B "$work/packages"
    find "$work/packages" -maxdepth 1 -name "$pattern"
}

check_linux()
{
    quietly cmake --install "$root/build/release" --prefix "$work/shared"
    consume_installed "shared library" "$work/shared"
    consume_as_the_readme_tells "$work/shared"
    links_lead_somewhere "$work/shared/share/doc"

    quietly cmake -S "$root" -B "$work/static-build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
        -DKS_GRAPH_BUILD_TESTS=OFF -DKS_GRAPH_BUILD_EXAMPLES=OFF
    quietly cmake --build "$work/static-build"
    quietly cmake --install "$work/static-build" --prefix "$work/static"
    consume_installed "static library" "$work/static"

    consume "sources in a subdirectory" subdirectory "-DKS_GRAPH_SOURCE_DIR=$root"

    mkdir "$work/archive" "$work/deb"
    tar -xzf "$(package "$root/build/release" TGZ '*.tar.gz')" -C "$work/archive"
    consume_installed archive "$work/archive"
    dpkg-deb -x "$(package "$root/build/release" DEB '*.deb')" "$work/deb"
    consume_installed deb "$work/deb"
}

check_windows()
{
    mkdir "$work/zip"
    unzip -q "$(package "$root/build/windows" ZIP '*.zip')" -d "$work/zip"
    local prefix
    prefix=$(dirname "$(dirname "$(find "$work/zip" -name ks_graph.dll)")")
    WINEPATH=$prefix/bin consume "Windows zip" package "-DCMAKE_TOOLCHAIN_FILE=$root/cmake/toolchains/mingw-w64.cmake" \
        "-DCMAKE_FIND_ROOT_PATH=$prefix" -DCMAKE_EXE_LINKER_FLAGS=-static
}

rm -rf "$work"
mkdir -p "$work"
"check_$1"

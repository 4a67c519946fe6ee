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

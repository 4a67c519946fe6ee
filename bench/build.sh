# Sourced by the commands that measure: installs what is missing on a Debian machine, and builds.
#   build_benchmarks ROOT RESULTS [TARGET]    the log stays in RESULTS, and is shown if that fails
build_benchmarks()
{
    local root=$1 results=$2
    source "$root/tools/require_packages.sh"
    require_packages g++ cmake ninja-build pkg-config python3 util-linux \
        libbenchmark-dev libboost-graph-dev libgraphviz-dev liblemon-dev >&2
    mkdir -p "$results"
    (cd "$root" && cmake --preset bench && cmake --build --preset bench ${3:+--target "$3"}) \
        >"$results/build.log" 2>&1 && return
    cat "$results/build.log" >&2
    exit 1
}

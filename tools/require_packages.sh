# Sourced by ./run and ./test: installs the Debian packages that are missing, and only those.

# require_packages PACKAGE...
require_packages()
{
    local package missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return

    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    if ! command -v apt-get >/dev/null; then
        echo "Please install what these Debian packages hold, then try again: ${missing[*]}" >&2
        exit 1
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

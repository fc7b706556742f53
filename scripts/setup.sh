#!/usr/bin/env bash
# Installs what building and testing tam needs on Debian 12; with --checks what scripts/check.sh needs as well, with --docs
# what scripts/docs.sh needs, and no more. Says and does nothing when all of it is there.
set -euo pipefail

packages=(
    cmake ninja-build                                     # build
    g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix # compilers and run-time libraries
    binutils-mingw-w64-x86-64 mingw-w64-x86-64-dev        # resource and message compilers, Windows headers
    wine wine64                                           # runs what was built
    googletest                                            # sources of the test framework
    libz-mingw-w64-dev                                    # a peer of the benchmarks
    mawk                                                  # makes the header of status codes
)
if [ "${1-}" = --checks ]; then
    packages+=(clang-format-14 clang-tidy-14 pkg-config python3)
elif [ "${1-}" = --docs ]; then
    packages=(doxygen graphviz mawk)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed; then
        missing+=("$package")
    fi
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "setup: installing ${missing[*]}" >&2
if [ "$(id -u)" -eq 0 ]; then as_root=(); else as_root=(sudo); fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
     } >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    echo "setup: the packages could not be installed" >&2
    exit 1
fi

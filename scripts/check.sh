#!/usr/bin/env bash
# What CI proves beside the tests: formatting, headers that stand alone, and an installed tree that a project of its own
# builds and runs against, found by CMake and by pkg-config. Needs build/release (scripts/test.sh leaves it).
set -euo pipefail
cd "$(dirname "$0")/.."

step() {
    echo "== $1" >&2
    shift
    "$@" || { echo "check.sh: failed: $*" >&2; exit 1; }
}

check_format() {
    git ls-files -z -- '*.h' '*.cpp' | xargs -0 clang-format-14 --dry-run -Werror
}

install_tree=$PWD/build/install
consumer=$PWD/build/consumer

build_consumer_with_cmake() {
    cmake -S tests/install -B "$consumer" -G Ninja --toolchain "$PWD/cmake/mingw-w64.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$install_tree" &&
        cmake --build "$consumer"
}

build_consumer_with_pkg_config() {
    local flags
    flags=$(PKG_CONFIG_PATH=$install_tree/lib/pkgconfig pkg-config --define-prefix --cflags --libs tam) || return 1
    # shellcheck disable=SC2086 # the flags are several words
    x86_64-w64-mingw32-g++-posix -std=c++20 -fnon-call-exceptions tests/install/*.cpp -o "$install_tree/bin/pkg_config_consumer.exe" $flags
}

step "Install what the checks need" scripts/setup.sh --checks
step "Formatting" check_format
step "Every public header stands alone" cmake --build --preset release --target all_verify_interface_header_sets
rm -rf "$install_tree" "$consumer"
step "Install" cmake --install build/release --prefix "$install_tree" >/dev/null
step "A project finds tam with CMake" build_consumer_with_cmake
step "It runs" scripts/wine.sh "$consumer/consumer.exe"
step "A program finds tam with pkg-config" build_consumer_with_pkg_config
step "It runs" scripts/wine.sh "$install_tree/bin/pkg_config_consumer.exe"

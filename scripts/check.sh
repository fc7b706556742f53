#!/usr/bin/env bash
# What CI proves beside the tests: formatting, headers that stand alone, debugger views that fit them, and packages whose
# contents are complete, need nothing that is not in them, and are enough for projects of their own to build and run, the
# examples among them. Needs build/release (scripts/test.sh leaves it).
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


check_natvis() {
    local source=$PWD/build/natvis.cpp
    scripts/natvis_expressions.py tam/tam.natvis >"$source" &&
        x86_64-w64-mingw32-g++-posix -std=c++20 -fno-access-control -fsyntax-only -I. -Ibuild/release/messages/include "$source"
}

packages=$PWD/build/packages
tree=$PWD/build/install # the package unpacked, and later the one with the symbols
built=$PWD/build/installed

# Both packages hold one folder, which has the name of the main package.
make_packages() {
    rm -rf "$packages" "$tree" "$built"
    cpack --config build/release/CPackConfig.cmake -B "$packages" >/dev/null || return 1
    debug_package=$(ls "$packages"/tam-*-windows-x86_64-debug.zip) && package=${debug_package%-debug.zip}.zip || return 1
    mkdir "$built"
    unpack "$package" && mv "$built/$(basename "$package" .zip)" "$tree"
}
unpack() {
    (cd "$built" && cmake -E tar xf "$1")
}

# The names of the files that the package should hold.
expected_files() {
    printf '%s\n' bin/{tam,tam_messages,libgcc_s_seh-1,libstdc++-6,libwinpthread-1}.dll lib/libtam.dll.a \
        lib/cmake/tam/{tam-config,tam-config-version,tam_targets,tam_targets-release,message_module}.cmake \
        lib/pkgconfig/tam.pc share/doc/tam/{LICENSE,README.md,CHANGELOG.md} share/tam/tam.natvis \
        include/tam/status/codes.h include/tam/detail/export.h
    git ls-files -- 'tam/*.h' | grep -v '^tam/detail/' | sed 's,^,include/,'
    git ls-files -- examples | sed 's,^,share/tam/,'
}
check_files() {
    (cd "$tree" && find . -type f -printf '%P\n') | sort | diff <(expected_files | sort) -
}

check_dependencies() {
    local allowed dll
    allowed=$(printf '%s\n' advapi32 kernel32 msvcrt netapi32 user32 libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
    for dll in "$tree"/bin/*.dll; do
        if x86_64-w64-mingw32-objdump -p "$dll" | sed -n 's/^\tDLL Name: \(.*\)\.dll$/\L\1/Ip' | grep -vxF "$allowed"; then
            echo "check.sh: $(basename "$dll") needs the DLLs above" >&2
            return 1
        fi
    done
}

# The address of Tam_status::pop() in the shipped DLL leads to its source once the debug package lies over the main one,
# and not before.
check_debug_symbols() {
    local dll=$tree/bin/tam.dll address before after
    if x86_64-w64-mingw32-objdump -h "$dll" | grep -F .debug_; then
        echo "check.sh: tam.dll still has its debug symbols" >&2
        return 1
    fi
    unpack "$debug_package" && mv "$built/$(basename "$package" .zip)" "$built/debug" || return 1
    address=$(x86_64-w64-mingw32-nm "$built/debug/bin/tam.dll.debug" | awk '$3 == "_ZN3tam10Tam_status3popEv" { print $1 }')
    before=$(x86_64-w64-mingw32-addr2line -e "$dll" "$address")
    cp "$built/debug/bin/tam.dll.debug" "$tree/bin"
    after=$(x86_64-w64-mingw32-addr2line -e "$dll" "$address")
    echo "without the symbols $before, with them $after" >&2
    [[ $before == '??:'* && $after =~ ^(\.\.?/)*tam/status/status\.cpp:[1-9] ]]
}

build_project() {
    cmake -S "$1" -B "$built/$2" -G Ninja --toolchain "$PWD/cmake/mingw-w64.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$tree" >/dev/null && cmake --build "$built/$2"
}
build_with_pkg_config() {
    local flags
    flags=$(PKG_CONFIG_PATH=$tree/lib/pkgconfig pkg-config --define-prefix --cflags --libs tam) || return 1
    mkdir "$built/pkg_config" && cp "$tree"/bin/*.dll "$built/pkg_config" || return 1
    # shellcheck disable=SC2086 # the flags are several words
    x86_64-w64-mingw32-g++-posix -std=c++20 -fnon-call-exceptions tests/install/*.cpp -o "$built/pkg_config/consumer.exe" $flags
}
run_examples() {
    local data=$tree/share/tam/examples/data output
    output=$(scripts/wine.sh "$built/examples/bin/profile_query.exe" "$data/mail_gateway.ini" Listener Port) || return 1
    grep -qx 2525 <<<"${output%$'\r'}" || { echo "$output" >&2; return 1; }
    # One of its jobs is there to fail. The texts come from a message module of its own.
    output=$(scripts/wine.sh "$built/examples/bin/run_jobs.exe" "$data/jobs.ini" 2>&1) && return 1
    grep -F '[Failing check] Ended with exit code 3.' <<<"$output" || { echo "$output" >&2; return 1; }
}

step "Install what the checks need" scripts/setup.sh --checks
step "Formatting" check_format
step "Every public header stands alone" cmake --build --preset release --target all_verify_interface_header_sets
step "What debuggers show is there" check_natvis
step "Make the packages" make_packages
step "The package holds what it should" check_files
step "Its DLLs need Windows and each other" check_dependencies
step "Its debug symbols lie apart and fit" check_debug_symbols
step "A project finds tam with CMake" build_project tests/install consumer
step "It runs" scripts/wine.sh "$built/consumer/consumer.exe"
step "A program finds tam with pkg-config" build_with_pkg_config
step "It runs" scripts/wine.sh "$built/pkg_config/consumer.exe"
step "The examples of the package build against it" build_project "$tree/share/tam/examples" examples
step "They run" run_examples

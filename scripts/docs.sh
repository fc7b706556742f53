#!/usr/bin/env bash
# Makes the documentation site, build/docs/html. Whatever is undocumented, or documented wrongly, is an error.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh --docs
# The program in README.md is one of the examples.
shown=$(sed -n '/^```cpp$/,/^```$/{/^```/d;p}' README.md)
if [[ "$(sed '/^ *\/\/! \[/d' examples/first_steps/status.cpp)" != *"$shown"* ]]; then
    echo "docs.sh: failed: the code in README.md is not that of examples/first_steps/status.cpp" >&2
    exit 1
fi

generated=build/docs/generated
rm -rf build/docs
mkdir -p "$generated/tam/status"
mawk -f messages/make_codes_header.awk messages/tam_messages.mc >"$generated/tam/status/codes.h"
mawk -v to="$generated" -f docs/code_tables.awk messages/tam_messages.mc tam/*/*.h tam/*/*.cpp
TAM_VERSION=$(sed -n 's/^project(tam VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
export TAM_VERSION
if ! doxygen docs/Doxyfile; then
    echo "docs.sh: failed: the warnings above" >&2
    exit 1
fi
echo "build/docs/html/index.html"

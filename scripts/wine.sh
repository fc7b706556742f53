#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix that is made when it is missing.
# Usage: wine.sh [--prefix DIR] PROGRAM [ARGUMENT...]      wine.sh [--prefix DIR] --up | --down
set -euo pipefail

prefix=$(cd "$(dirname "$0")/.." && pwd)/build/wine
if [ "${1-}" = --prefix ]; then
    prefix=$2
    shift 2
fi
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} LANG=C.UTF-8
unset LC_ALL DISPLAY WINEARCH
# A fault that nobody handles ends the program; the debugger would only delay that.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree=;mshtml=;winedbg.exe=d}"

# Wine's services inherit the output of the process that starts them, and whoever reads that output would wait for
# them; so they are started detached. A new prefix must be set up by one process alone.
up() {
    mkdir -p "$prefix"
    exec 9>"$prefix/.tam-lock"
    flock 9
    if [ ! -e "$prefix/.tam-ready" ]; then
        wine wineboot -i </dev/null >/dev/null 2>&1 9>&-
        wineserver -w 9>&-
        touch "$prefix/.tam-ready"
    fi
    wineserver -p60 </dev/null >/dev/null 2>&1 9>&- || true
    wine cmd /c exit </dev/null >/dev/null 2>&1 9>&-
    exec 9>&-
}

case "${1-}" in
    --up) up ;;
    --down) if [ -d "$prefix" ]; then wineserver -k || true; fi ;;
    '') echo "usage: wine.sh [--prefix DIR] PROGRAM [ARGUMENT...]" >&2; exit 2 ;;
    *)
        [ -e "$prefix/.tam-ready" ] || up
        exec wine "$@"
        ;;
esac

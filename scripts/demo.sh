#!/usr/bin/env bash
# Builds tam and shows it at work under Wine: a service's profile file is listed and queried through tam.dll, files of this
# project are read for their checksums, the jobs of another profile file run in threads, and a copy of the profile is
# changed. Requests that must fail show how failures are reported.
set -euo pipefail
cd "$(dirname "$0")/.."

step() {
    "$@" || { echo "demo.sh: failed: $*" >&2; exit 1; }
}
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

step scripts/setup.sh
step quietly cmake --preset release
step quietly cmake --build --preset release
step scripts/wine.sh --up

# show EXPECTED_EXIT_CODE PROGRAM [ARGUMENT...]
show() {
    local expected=$1 code=0
    shift
    echo
    echo "> $*"
    scripts/wine.sh "build/release/bin/$1.exe" "${@:2}" 2>&1 || code=$?
    if [ "$code" -ne "$expected" ]; then
        echo "demo.sh: exit code $code instead of $expected: $*" >&2
        exit 1
    fi
}

profile=examples/data/mail_gateway.ini
show 0 profile_query "$profile"
show 0 profile_query "$profile" Listener
show 0 profile_query "$profile" service description
echo
echo "Requests that must fail; each prints the newest status first and its reasons below it:"
show 1 profile_query missing.ini
show 1 profile_query "$profile" Printers
show 1 profile_query "$profile" Listener Certificate

# The line that file_digest should print for a file, made by gzip, whose output ends with the CRC-32 and four bytes of
# size, and by wc.
expected_digest() {
    local crc
    crc=$(gzip -c "$1" | tail -c 8 | od -An -tx4 -N4 | tr -d ' ')
    echo "${crc^^} $(wc -c <"$1") $(wc -l <"$1")"
}
# Passes the output of file_digest on, and checks its lines.
check_digests() {
    local output crc size lines name checked=0
    output=$(cat)
    echo "$output"
    while read -r crc size lines name; do
        if [ "$crc $size $lines" != "$(expected_digest "${name//\\//}")" ]; then
            echo "demo.sh: gzip and wc do not agree: $name" >&2
            exit 1
        fi
        checked=$((checked + 1))
    done < <(tr -d '\r' <<<"$output" | grep -E '^[0-9A-F]{8} ')
    [ "$checked" -ne 0 ] || { echo "demo.sh: file_digest printed nothing" >&2; exit 1; }
}

show 0 file_digest 'tam/stream/*.cpp' README.md | check_digests
mkdir -p build/demo
rm -f build/demo/*.md
cp README.md CHANGELOG.md build/demo
mkfifo build/demo/pipe.md # for programs under Wine not a file
echo
echo "One file that cannot be read and a pattern without a match; the others are still done:"
show 1 file_digest 'build/demo/*.md' 'build/demo/*.missing' | check_digests

echo
echo "Jobs in threads of their own; one fails, one is terminated, one comes again and again, one does not exist:"
show 1 run_jobs examples/data/jobs.ini

echo
echo "Changes to a copy of the profile; all edits of a call are committed together, or none:"
copy=build/demo_profile.ini
cp "$profile" "$copy"
show 0 profile_edit "$copy" set Service Workers 12 copy-section Listener "Second listener" \
    set "Second listener" Port 2526 delete "Second listener" Filter
show 0 profile_query "$copy" "Second listener"
show 1 profile_edit "$copy" set Service Workers 99 rename-section Routes Listener
show 0 profile_edit "$copy" set Service Workers 16 commit get Service Workers rollback get Service Workers
rm -f "$copy" "${copy%.ini}.bak"

echo
echo "The access list of a registry key of its own: a denial goes before the grants and wins over them:"
scripts/wine.sh reg add 'HKCU\Software\tam demo' /f >/dev/null
show 0 acl key 'CURRENT_USER\Software\tam demo' show
show 0 acl key 'CURRENT_USER\Software\tam demo' grant Everyone 20019
show 0 acl key 'CURRENT_USER\Software\tam demo' deny SYSTEM 10
show 0 acl key 'CURRENT_USER\Software\tam demo' show
show 0 acl key 'CURRENT_USER\Software\tam demo' test SYSTEM 9
show 1 acl key 'CURRENT_USER\Software\tam demo' grant 'no such account' 1
scripts/wine.sh reg delete 'HKCU\Software\tam demo' /f >/dev/null

# same_as_grep ARGUMENT...: passes the output of the example on, and compares it with that of the system's grep, but for
# the order of files and their separators.
same_as_grep() {
    local output
    output=$(cat)
    echo "$output"
    if [ "$(tail -n +3 <<<"$output" | tr '\\' / | tr -d '\r' | sort)" != "$(grep -E "$@" | tr '\\' / | sort)" ]; then
        echo "demo.sh: the system's grep does not agree: $*" >&2
        exit 1
    fi
}
echo
echo "Lines that match a pattern, in text of bytes and of UTF-16:"
show 0 grep -n '^(public|private):|~Tam_[a-z]+(_[a-z]+)*\(' 'tam/file/*_buffer.h' tam/file/path.h |
    same_as_grep -n '^(public|private):|~Tam_[a-z]+(_[a-z]+)*\(' tam/file/*_buffer.h tam/file/path.h
show 0 grep -ic '[[:space:]]tam_(upper|lower)' 'tam/text/case.*' | same_as_grep -ic '[[:space:]]tam_(upper|lower)' tam/text/case.*
{ printf '\xFF\xFE' && iconv -f UTF-8 -t UTF-16LE CHANGELOG.md; } >build/demo/changes.txt
show 0 grep -i '^- REGULAR|wildcards?' build/demo/changes.txt | same_as_grep -i '^- REGULAR|wildcards?' CHANGELOG.md
show 1 grep 'nowhere in (it|them)' CHANGELOG.md
show 2 grep '(a|b' CHANGELOG.md

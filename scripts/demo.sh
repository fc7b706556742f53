#!/usr/bin/env bash
# Builds tam and shows it at work under Wine. First a whole service, examples/spooler: it digests files of this project, is
# queried and given new settings, reports failures, and runs under the service control manager too. Then the smaller
# examples. What the service and file_digest find out is compared with what gzip and wc do.
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
        fail "exit code $code instead of $expected: $*"
    fi
}
title() {
    echo
    echo "$*"
}
fail() {
    echo "demo.sh: $*" >&2
    exit 1
}

# CRC-32, bytes and lines of a file, made by gzip, whose output ends with the CRC-32 and four bytes of size, and by wc.
expected_digest() {
    local crc
    crc=$(gzip -c "$1" | tail -c 8 | od -An -tx4 -N4 | tr -d ' ')
    echo "${crc^^} $(wc -c <"$1") $(wc -l <"$1")"
}

demo=build/demo
service=tam_demo_$$
rm -rf "$demo"
mkdir -p "$demo/outbox"

ask() {
    scripts/wine.sh build/release/bin/spooler_client.exe "$service" "$@" 2>/dev/null | tr -d '\r'
}
# await NAME VALUE: until the service's status shows that figure.
await() {
    local i
    for ((i = 0; i < 300; i++)); do
        if ask status | grep -qx "$1 *$2"; then return; fi
        sleep 0.1
    done
    fail "the service did not come to $1 $2"
}
# Files are moved into the folder of the service, so that they are whole when it sees them.
spool() {
    cp "$@" "$demo/outbox"
    mv "$demo/outbox"/* "$demo/spool/incoming"
}
end_service() {
    scripts/wine.sh build/release/bin/spooler.exe stop "$service" >/dev/null 2>&1 || true
    scripts/wine.sh build/release/bin/spooler.exe remove "$service" >/dev/null 2>&1 || true
    ask stop >/dev/null || true
}
trap end_service EXIT

# write_profile WORKERS: the example's profile with a folder of ours.
write_profile() {
    local folder
    folder=$(scripts/wine.sh winepath -w "$PWD/$demo/spool" | tr -d '\r')
    iconv -f UTF-16 -t UTF-8 examples/data/spooler.ini |
        sed -e "s/^Folder = .*/Folder = ${folder//\\/\\\\}\r/" -e "s/^Workers = .*/Workers = $1\r/" |
        iconv -t UTF-16LE >"$demo/spooler.ini"
}

title "A service, in the console mode of its program, digests the files that are put into its folder:"
write_profile 2
echo "> spooler console $service $demo/spooler.ini &"
scripts/wine.sh build/release/bin/spooler.exe console "$service" "$demo/spooler.ini" >"$demo/report.txt" 2>&1 &
running=$!
await workers 2
spooled=(tam/stream/*.cpp tam/thread/*.cpp README.md CHANGELOG.md)
spool "${spooled[@]}"
await "done" ${#spooled[@]}
show 0 spooler_client "$service" status
show 0 spooler_client "$service" journal 5

# Every line of the journal, against the files where they come from.
checked=0
while IFS=$'\t' read -r _ _ outcome crc size lines name; do
    for original in "${spooled[@]}"; do
        if [ "$(basename "$original")" = "$name" ] && [ "$outcome $crc $size $lines" = "done $(expected_digest "$original")" ]; then
            checked=$((checked + 1))
        fi
    done
done < <(ask journal 100)
[ "$checked" -eq ${#spooled[@]} ] || fail "gzip and wc agree with $checked lines of the journal only"
title "gzip and wc agree with the $checked lines of the journal."

title "A file that is no text fails, and new settings that are wrong are refused:"
head -c 100000 /dev/zero >"$demo/picture.bin"
spool "$demo/picture.bin"
await failed 1
write_profile 99
show 1 spooler_client "$service" reload
write_profile 3
show 0 spooler_client "$service" reload
await workers 3
show 0 spooler_client "$service" stop
wait "$running" || fail "the service ended with exit code $?"
title "What the service reported, each failure with its reasons:"
cat "$demo/report.txt"

title "The same service under the service control manager:"
show 0 spooler install "$service" "$demo/spooler.ini"
show 0 spooler start "$service"
spool README.md
await "done" 1
show 0 spooler_client "$service" journal 1
show 0 spooler stop "$service"
show 0 spooler remove "$service"
trap - EXIT

title "The smaller examples. A profile file, and requests that must fail:"
profile=examples/data/mail_gateway.ini
show 0 profile_query "$profile" Listener
show 0 profile_query "$profile" service description
show 1 profile_query "$profile" Listener Certificate
show 1 profile_query missing.ini

# Passes the output of file_digest on, and checks its lines.
check_digests() {
    local output crc size lines name checked=0
    output=$(cat)
    echo "$output"
    while read -r crc size lines name; do
        [ "$crc $size $lines" = "$(expected_digest "${name//\\//}")" ] || fail "gzip and wc do not agree: $name"
        checked=$((checked + 1))
    done < <(tr -d '\r' <<<"$output" | grep -E '^[0-9A-F]{8} ')
    [ "$checked" -ne 0 ] || fail "file_digest printed nothing"
}

title "Checksums of files; one that cannot be read and a pattern without a match, and the others are still done:"
cp README.md CHANGELOG.md "$demo"
mkfifo "$demo/pipe.md" # for programs under Wine not a file
show 1 file_digest "$demo/*.md" "$demo/*.missing" 'tam/text/*.cpp' | check_digests

title "Jobs in threads of their own; one fails, one is terminated, one comes again and again, one does not exist:"
show 1 run_jobs examples/data/jobs.ini

title "Changes to a copy of the profile; all edits of a call are committed together, or none:"
copy=$demo/profile.ini
cp "$profile" "$copy"
show 0 profile_edit "$copy" set Service Workers 12 copy-section Listener "Second listener" \
    set "Second listener" Port 2526 delete "Second listener" Filter
show 0 profile_query "$copy" "Second listener"
show 1 profile_edit "$copy" set Service Workers 99 rename-section Routes Listener
show 0 profile_edit "$copy" set Service Workers 16 commit get Service Workers rollback get Service Workers

title "The access list of a registry key of its own: a denial goes before the grants and wins over them:"
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
for encoding in UTF-16LE UTF-16BE; do
    printf '\xEF\xBB\xBF' | cat - CHANGELOG.md | iconv -f UTF-8 -t "$encoding" >build/demo/changes.txt
    show 0 grep -in '^- REGULAR|wildcards?' build/demo/changes.txt | same_as_grep -in '^- REGULAR|wildcards?' CHANGELOG.md
done
show 1 grep 'nowhere in (it|them)' CHANGELOG.md
show 2 grep '(a|b' CHANGELOG.md

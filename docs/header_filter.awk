# What doxygen reads instead of a public header, line by line the same. The headers are written for people: one comment
# stands over all declarations up to the next empty line, and what cannot be called has none. doxygen wants a comment for
# each declaration, so this repeats it, hides deleted and self-evident special members and all that is private, and puts
# everything into the group of its subsystem, which is the folder's name.
#
#     mawk -f docs/header_filter.awk tam/thread/mutex.h

BEGIN { at_start = 1 }

function count(text, character) { return gsub(character, "", text) }

FNR == 1 {
    folders = split(FILENAME, folder, "/")
    group = folder[folders] == "codes.h" ? "codes" : folders > 2 ? folder[folders - 1] : ""
}

FNR == 2 && /^$/ { print "/** @file */"; next } # so that the header is listed

/^namespace tam \{/ && group != "" { print $0 " /** @addtogroup " group " */ /** @{ */"; next }
/^\} \/\/ namespace tam/ && group != "" { print "/** @} */ " $0; next }

/^ *\/\/\// && !is_private {
    line = $0
    sub(/^ *\/\/\/ ?/, "", line)
    comment = in_comment ? comment "\\ilinebr " line : line
    in_comment = 1
    first = 1
    print
    next
}

{ in_comment = 0 }

/^private:/ { is_private = 1 }
/^(public|protected):|^\};/ { is_private = 0 }
is_private { print ""; next }

/^ *$/ || /^(public|protected|private):/ || /^#/ { if (depth == 0) { comment = ""; first = 0 } print; next }

/^ *friend [^{]*;$/ { print ""; next }

# A scope whose members are documented one by one.
(at_start || after_template) && /^ *(class|struct|enum|namespace) .*\{$/ {
    comment = ""
    first = 0
    at_start = 1
    after_template = 0
    print
    next
}
at_start && /^ *\};?/ { comment = ""; first = 0; print; next }

at_start && (/= delete;$/ || (!first && /~[A-Za-z_]*\(\).*;$/) || (!first && /= default;$/ && !/operator[=!<]=[ (]/ && !/operator<=>/)) {
    print ""
    next
}

{
    out = $0
    if (at_start && !first && comment != "" && $0 !~ / override;$/ && comment !~ /^@(file|name|})/ && $0 !~ /^ *\/\//) {
        out = "/** " comment " */ " $0
    }
    if ($0 !~ /^ *\/\//) {
        code = $0
        sub(/ *\/\/.*$/, "", code)
        depth += count(code, "[({]") - count(code, "[)}]")
        at_start = depth == 0 && code ~ /[;}]$/
        after_template = depth == 0 && code ~ /^ *template <.*>$/
        if (at_start) {
            first = 0
        }
    }
    print out
}

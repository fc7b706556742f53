# What doxygen reads instead of a page of docs/. The pages are plain Markdown that reads well in a repository too; here
#  - names of the library between backticks become links, and a name that does not exist becomes an error;
#  - links to examples lead to their page in the site;
#  - "<!-- program FILE -->" and "<!-- snippet FILE NAME -->" become code of examples/ or tests/;
#  - "<!-- status codes of thread -->" becomes the table that docs/code_tables.awk made.

function with_links(text, result, name)
{
    result = ""
    while (match(text, /`(Tam|tam|TAM|crc32)_[A-Za-z0-9_]+(::[A-Za-z0-9_]+)*(\(\))?`/)) {
        name = substr(text, RSTART + 1, RLENGTH - 2)
        result = result substr(text, 1, RSTART - 1)
        if (name ~ /^TAM_(API|STATIC|BUILD)$/ || name ~ /^tam_(test|check|messages)/) {
            result = result "`" name "`"
        } else {
            result = result "@ref tam::" name " \"" name "\""
        }
        text = substr(text, RSTART + RLENGTH)
    }
    return result text
}

/^```/ { in_code = !in_code; print; next }
in_code { print; next }

/^<!-- status codes of [a-z]+ -->$/ {
    table = "build/docs/generated/codes_" $5 ".table"
    while ((getline line < table) > 0) {
        print line
        ++lines
    }
    if (!lines) {
        print FILENAME ":" FNR ": no table of status codes: " table > "/dev/stderr"
        print "@ref no_table_of_status_codes"
    }
    next
}

/^<!-- (program|snippet) .* -->$/ {
    if ($2 == "program") {
        print "\\include " $3
    } else {
        print "\\snippet " $3 " " $4
    }
    next
}

{
    line = $0
    while (match(line, /\]\(\.\.\/examples\/[a-z_0-9\/]+\.cpp\)/)) {
        path = substr(line, RSTART + length("](../examples/"), RLENGTH - length("](../examples/") - 1)
        line = substr(line, 1, RSTART - 1) "](@ref " path ")" substr(line, RSTART + RLENGTH)
    }
    print with_links(line)
}

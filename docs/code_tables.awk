# Makes the tables of status codes for the pages: one of all codes and one a subsystem. A code belongs to the subsystems
# whose headers or sources name it.
#
#     mawk -v to=FOLDER -f docs/code_tables.awk messages/tam_messages.mc tam/*/*.h tam/*/*.cpp

{ sub(/\r$/, "") }

FILENAME ~ /\.mc$/ && /^MessageId=0x/ {
    split($1, of_number, "=0x")
    split($4, of_name, "=")
    name = of_name[2]
    names[++codes] = name
    number[name] = "0xC200" toupper(of_number[2])
    text[name] = ""
    inserts[name] = 0
    next
}
FILENAME ~ /\.mc$/ && /^Language=/ { in_text = 1; next }
FILENAME ~ /\.mc$/ && /^\.$/ { in_text = 0; next }
FILENAME ~ /\.mc$/ && in_text {
    line = $0
    text[name] = text[name] line " "
    while (match(line, /%[0-9]+/)) {
        insert = substr(line, RSTART + 1, RLENGTH - 1) + 0
        if (insert > inserts[name]) {
            inserts[name] = insert
        }
        line = substr(line, RSTART + RLENGTH)
    }
    next
}
FILENAME ~ /\.mc$/ { next }

FNR == 1 {
    split(FILENAME, folder, "/")
    subsystem = folder[2]
}
subsystem != "detail" {
    line = $0
    while (match(line, /TAM_E_[A-Z_0-9]+/)) {
        name = substr(line, RSTART, RLENGTH)
        line = substr(line, RSTART + RLENGTH)
        if (!(name in number)) {
            print FILENAME ":" FNR ": no such status code: " name > "/dev/stderr"
            failed = 1
        } else if (!((subsystem, name) in used)) {
            used[subsystem, name] = 1
            subsystems[subsystem] = 1
            where[name] = where[name] (where[name] == "" ? "" : ", ") subsystem
        }
    }
}

function row(name) { return "| " number[name] " | @ref tam::" name " \"" name "\" | " text[name] "| " inserts[name] " |" }

END {
    head = "| Number | Name | Text | Inserts |"
    rule = "|:-------|:-----|:-----|--------:|"
    table = to "/codes_all.table"
    print head " Subsystems |\n" rule ":-----------|" > table
    for (i = 1; i <= codes; ++i) {
        print row(names[i]) " " where[names[i]] " |" > table
    }
    for (subsystem in subsystems) {
        table = to "/codes_" subsystem ".table"
        print head "\n" rule > table
        for (i = 1; i <= codes; ++i) {
            if ((subsystem, names[i]) in used) {
                print row(names[i]) > table
            }
        }
    }
    exit failed
}

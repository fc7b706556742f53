# Makes the header of named status codes from tam_messages.mc: a constant a message, its text as the doc comment.

BEGIN {
    severity["Success"] = "0"; severity["Informational"] = "4"; severity["Warning"] = "8"; severity["Error"] = "C"
    print "#pragma once"
    print ""
    print "/// @file"
    print "/// Status codes of the library, made from messages/tam_messages.mc. The comment of a code is its message:"
    print "/// %1, %2 ... stand for the arguments that a status with this code carries, in their order."
    print ""
    print "namespace tam {"
}

{ sub(/\r$/, "") }

/^MessageId=0x[0-9a-fA-F][0-9a-fA-F][0-9a-fA-F][0-9a-fA-F] / {
    number = substr($1, length("MessageId=0x") + 1)
    split($2, of_severity, "=")
    split($4, of_name, "=")
    next
}

/^MessageId=/ { print FILENAME ":" FNR ": write the message id with four digits" > "/dev/stderr"; exit failed = 1 }

/^Language=/ { in_text = 1; print ""; next }

in_text && /^\.$/ {
    print "inline constexpr unsigned int " of_name[2] " = 0x" severity[of_severity[2]] "200" toupper(number) ";"
    in_text = 0
    next
}

in_text { print "/// " $0 }

END {
    if (!failed) {
        print ""
        print "} // namespace tam"
    }
}

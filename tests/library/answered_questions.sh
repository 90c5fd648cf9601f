#!/bin/sh
# answered_questions.sh SOURCE_DIR MARK HEADER...
# Each function that the headers declare behind MARK ("-": without a mark) has a comment with what it
# does, an answer for each of its parameters, for the result, and for what it logs, the lock and the
# standard. A comment serves the declarations that follow it without a blank line.
set -eu
cd "$1"
mark=$2
shift 2

awk -v mark="$mark" '
function complain(what) { print FILENAME ": " name ": " what; bad = 1 }

function answer(tag) {
    if (index(comment, "\\note " tag ": ") == 0) complain("nothing about " tag)
}

# The names of the parameters: the last word of each, callbacks have none of their own here.
function check_parameters(list,    count, i, parts, words, n) {
    sub(/^[^(]*\(/, "", list)
    sub(/\)[^)]*$/, "", list)
    sub(/\)[[:space:]]*__attribute__.*$/, "", list)
    count = split(list, parts, ",")
    for (i = 1; i <= count; i++) {
        gsub(/[*]/, " ", parts[i])
        n = split(parts[i], words, /[[:space:]]+/)
        while (n > 0 && words[n] == "") n--
        if (n == 0 || words[n] == "void" || words[n] == "...") continue
        if (comment !~ ("\\\\param\\[(in|out)\\] +" words[n] "  *[^ ]"))
            complain("nothing about parameter " words[n])
    }
}

function check(    head) {
    head = declaration
    sub(/\(.*/, "", head)
    match(head, /[A-Za-z_0-9]+$/)
    name = substr(head, RSTART, RLENGTH)
    seen++
    if (comment !~ /^\/\*\*[[:space:]*]+[A-Z]/) complain("does not say what it does")
    if (comment !~ /\\return [^[:space:]]/) complain("nothing about the result")
    check_parameters(declaration)
    answer("Logs"); answer("Lock"); answer("Standard")
}

FNR == 1 { comment = ""; declaration = ""; inside = 0 }
/^\/\*/ { comment = ""; inside = 1 }
inside { comment = comment $0 " "; if (/\*\//) inside = 0; next }
/^[[:space:]]*$/ { comment = ""; next }
declaration == "" && (mark == "-" ? /^(int|void|uint32_t|const char\*) [A-Za-z_0-9]+\(/ \
                                  : index($0, mark " ") == 1 && index($0, mark " extern") != 1) {
    declaration = $0
    if (declaration !~ /;[[:space:]]*$/) next
    check(); declaration = ""; next
}
declaration != "" {
    declaration = declaration " " $0
    if (/;[[:space:]]*$/) { check(); declaration = "" }
}
END {
    if (seen == 0) { print "no declarations found"; bad = 1 }
    print seen + 0 " functions"
    exit bad
}
' "$@"

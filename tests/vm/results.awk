#!/usr/bin/awk -f
# Reads what the test programs print, shows each case with its outcome, and counts them.
# Ends with 1 when one failed or has not ended, or when there was none or not all came to their end.
BEGIN {
    passed = failed = skipped = whole = 0
    running = ""
}

function show(outcome, name, reason)
{
    printf "%-8s %s%s\n", outcome, name, reason == "" ? "" : ": " reason
    fflush()
}

function lose()
{
    if (running != "") {
        show("hung", running, last)
        failed++
    }
    running = ""
}

/^\[ RUN      \] / {
    lose()
    running = $4
    said = last = ""
    next
}
/^\[       OK \] .*\(/ {
    show("passed", $4)
    passed++
    running = ""
    next
}
/^\[  FAILED  \] .*\(/ && running != "" {
    printf "%s", said
    show("failed", $4)
    failed++
    running = ""
    next
}
/^\[  SKIPPED \] .*\(/ && running != "" {
    show("skipped", $4, last)
    skipped++
    running = ""
    next
}
/^all suites have ended$/ {
    whole = 1
}
{
    said = said $0 "\n"
    last = $0
}

END {
    lose()
    printf "%d passed, %d failed, %d skipped\n", passed, failed, skipped
    if (!whole)
        print "not all came to their end"
    exit !whole || failed > 0 || passed == 0
}

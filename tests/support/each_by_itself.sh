#!/bin/sh
# each_by_itself.sh ENDINGS
# What --each-by-itself makes of tests that end in every way.
set -u
output=$("$1" --each-by-itself 4 2>&1) && { echo "failures, and exit code 0"; exit 1; }

expect()
{
    printf '%s\n' "$output" | grep -q "$1" || { printf 'no line "%s" in:\n%s\n' "$1" "$output"; exit 1; }
}

expect '^passed .* Endings\.First$'
expect '^passed .* Endings\.SecondSeesNothingOfTheFirst$'
expect '^passed .* Names/Named\.Passes/0$'
expect '^skipped .* Endings\.Skipped$'
expect 'said by the skipped test'
expect '^failed .* Endings\.Failing$'
expect 'said by the failing test'
expect '^failed .* Endings\.Aborting$'
expect '^failed .* Endings\.EndingTheProgram$'
expect '^timed out 4\.[0-9]* s Endings\.HangingWithAChild$'
expect '^8 tests by themselves: 3 passed, 1 skipped, 4 failed$'
for tries in 1 2 3 4 5 6 7 8 9 10; do
    pgrep -f '^sleep 86399$' >/dev/null || break
    [ $tries -lt 10 ] || { echo "what the hanging test had started is still there"; exit 1; }
    sleep 0.1
done
"$1" --each-by-itself nonsense 2>&1 | grep -q '^usage: ' || { echo "nonsense is taken"; exit 1; }

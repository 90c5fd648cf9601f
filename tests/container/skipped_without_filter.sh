#!/bin/sh
# skipped_without_filter.sh PLAIN_CONTAINER TEST_PROGRAM
# Where a sandbox refuses filters of system calls that ask another process, and where the kernel has
# none, each test of a program that runs virtual boards is skipped, with the reason.
set -eu
plain_container=$1
program=$2
said=$(mktemp)
trap 'rm -f "$said"' EXIT

for number in 1 22; do
    "$plain_container" --listener-fails $number "$program" >"$said" 2>&1 || {
        echo "fails with error $number of the filter"
        cat "$said"
        exit 1
    }
    for line in 'seccomp user notification' '^\[  SKIPPED \]'; do
        grep -q "$line" "$said" || {
            echo "'$line' is missing with error $number"
            cat "$said"
            exit 1
        }
    done
    ! grep '^\[ RUN ' "$said" || {
        echo "begins with error $number all the same"
        exit 1
    }
done

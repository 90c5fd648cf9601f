#!/bin/bash
# check-form.sh
# The form of what is under version control: C and C++ as clang-format writes it, commit messages as
# CONTRIBUTING.md wants them.
set -euo pipefail
cd "$(dirname "$0")/.."
status=0

sources()
{
    find . -name .git -prune -o -path './build*' -prune -o \
        -regex '.*\.\(c\|h\|cpp\|hpp\)' -print0 | sort -z
}
sources | xargs -0 -n 40 -P "$(nproc)" clang-format --dry-run --Werror || status=1
scripts/check-commits.sh || status=1
exit $status

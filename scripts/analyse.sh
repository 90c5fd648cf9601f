#!/bin/bash
# analyse.sh BUILD_DIR --library | --whole [FOLDER...]
# --library: clang-tidy over the library, with the commands of a clang build without tests.
# --whole: clang-tidy and cppcheck over everything, with commands of its own, which know no
# precompiled header: so what a source forgets to include is seen, too. With folders: clang-tidy
# over these alone.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
library='/(common|platform|hwmbox|board|switch|switch_hal_services|phy)/.*\.cpp$'

# The sources of the compilation database whose paths match.
sources()
{
    python3 - "$build/compile_commands.json" "$PWD" "$1" <<'PYTHON'
import json, os, re, sys
database, root, wanted = sys.argv[1:]
root = os.path.realpath(root)
files = {os.path.realpath(entry["file"]) for entry in json.load(open(database))}
for path in sorted(files):
    inside = path[len(root):]
    if path.startswith(root + "/") and re.match(wanted, inside) and not inside.startswith("/build"):
        print(path)
PYTHON
}

tidy()
{
    local files
    files=$(sources "$1")
    [ "$(wc -l <<<"$files")" -ge "$2" ] || { echo "too few sources to analyse"; exit 1; }
    xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p "$build" <<<"$files"
}

# It is given a copy in which the log macros have the older spelling of __VA_OPT__, which it does not
# know. Left out: the formats of the interface print unsigned values with %d; directories, users and
# groups are read by one thread.
check_with_cppcheck()
{
    local copy
    copy=$(mktemp -d)
    trap 'rm -rf "$copy"' RETURN
    find . -name .git -prune -o -path './build*' -prune -o -regex '.*\.\(c\|h\|cpp\)' -print0 |
        xargs -0 cp --parents -t "$copy"
    grep -rlZ __VA_OPT__ "$copy" | xargs -0 -r sed -i 's/__VA_OPT__(, ) __VA_ARGS__/, ##__VA_ARGS__/'
    (cd "$copy" && cppcheck --quiet --error-exitcode=1 -j "$(nproc)" --std=c++20 -I. \
        --library=googletest --library=posix --enable=warning,performance,portability \
        --inline-suppr --suppress=invalidPrintfArgType_sint \
        --suppress=readdirCalled --suppress=getpwuidCalled --suppress=getgrgidCalled .)
}

case ${2:-} in
    --library)
        tidy "$library" 50
        ;;
    --whole)
        cmake --preset clang -B "$build" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON
        shift 2
        if [ $# -gt 0 ]; then
            tidy "/($(IFS='|' && echo "$*"))/.*\.cpp$" 1
            exit
        fi
        cmake --build "$build"
        tidy '.*\.cpp$' 300
        check_with_cppcheck
        ;;
    *)
        sed -n '2,6s/^# //p' "$0" >&2
        exit 2
        ;;
esac

#!/bin/bash
# analyse.sh BUILD_DIR --library | --whole [FOLDER...]
# --library: clang-tidy over the library, with the commands of a clang build without tests.
# --whole: clang-tidy and cppcheck over everything, with commands of its own, which know no
# precompiled header: so what a source forgets to include is seen, too. With folders: clang-tidy
# over these alone. As many runs at a time as `nproc` says (OMP_NUM_THREADS=1 for one).
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
library='/(common|platform|hwmbox|board|switch|switch_hal_services|phy)/.*\.cpp$'

# clang-tidy with a check of its own, compiled against the headers that came with it.
tidy_whole()
{
    local source=scripts/tidy_tree_only.cpp plugin llvm
    plugin=$(realpath "$build")/tidy_tree_only.so
    llvm=$(dirname "$(dirname "$(readlink -f "$(command -v clang-tidy)")")")
    [ "$plugin" -nt $source ] || clang++ -std=c++17 -fno-rtti -fno-exceptions -shared -fPIC -D_GNU_SOURCE \
        -D__STDC_CONSTANT_MACROS -D__STDC_LIMIT_MACROS "-I$llvm/include" $source -o "$plugin"
    scripts/tidy.py "$build" "$1" "$2" "$plugin"
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
        scripts/tidy.py "$build" "$library" 50
        ;;
    --whole)
        cmake --preset clang -B "$build" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DORBLINK_UNITY=ON
        shift 2
        if [ $# -gt 0 ]; then
            tidy_whole "/($(IFS='|' && echo "$*"))/.*\.(cpp|c)$" 1
            exit
        fi
        tidy_whole '.*\.(cpp|c)$' 600
        check_with_cppcheck
        ;;
    *)
        sed -n '2,7s/^# //p' "$0" >&2
        exit 2
        ;;
esac

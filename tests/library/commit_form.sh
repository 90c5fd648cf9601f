#!/bin/sh
# commit_form.sh SOURCE_DIR
# scripts/check-commits.sh takes a well-formed message and refuses each kind of ill-formed one.
set -eu
command -v git >/dev/null || exit 77
house=$(mktemp -d)
trap 'rm -rf "$house"' EXIT
mkdir "$house/scripts"
cp "$1/scripts/check-commits.sh" "$house/scripts"
cd "$house"
export HOME="$house" GIT_CONFIG_NOSYSTEM=1
git init -q
git config user.name Somebody
git config user.email somebody@example.org

status=0
expect() {
    git commit -q --allow-empty -m "$2" ${3:+-m "$3"}
    if scripts/check-commits.sh >out 2>&1; then said=taken; else said=refused; fi
    [ "$said" = "$1" ] || {
        echo "$said: $2"
        cat out
        status=1
    }
}

reason='Because it is so; shown by a test.'
expect taken 'tests, common: hold the order of the calls' "$reason"
expect taken 'switch: press on with a missing port' "$reason"
expect taken 'docs: embed the picture' "$reason"
expect refused 'hold the order of the calls' "$reason"
expect refused 'tests: Hold the order of the calls' "$reason"
expect refused 'tests: holds the order of the calls' "$reason"
expect refused 'tests: added a test' "$reason"
expect refused 'tests: adding a test' "$reason"
expect refused 'tests: the order of the calls' "$reason"
expect refused 'tests: hold the order of the calls.' "$reason"
expect refused 'tests: hold the order of the calls'
expect refused 'tests: hold the order of all the calls that any operation of either family makes' "$reason"

# The history of a tree that is another user's is looked at as well.
if [ "$(id -u)" -eq 0 ]; then
    chown -R 65534 "$house"
    scripts/check-commits.sh HEAD~1.. >out 2>&1 || true
    grep -q '^1 commits checked$' out || {
        echo "another user's tree: $(cat out)"
        status=1
    }
fi
exit $status

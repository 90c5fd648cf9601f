#!/bin/sh
# packages_wanted.sh SOURCE_DIR
# scripts/install-packages.sh as an ordinary user, with a package database and rights that are played:
# silent when nothing is missing, exact when something is.
set -eu
script=$1/scripts/install-packages.sh
played=$(mktemp -d)
trap 'rm -rf "$played"' EXIT
play() {
    printf '#!/bin/sh\n%s\n' "$2" >"$played/$1"
    chmod +x "$played/$1"
}
run() {
    PATH=$played:$PATH sh "$script" >"$played/out" 2>&1 </dev/null
}
fail() {
    echo "$1"
    cat "$played/out"
    exit 1
}

play id '[ "$1" = -u ] && echo 1000 || echo somebody'
play sudo 'exit 1'
play apt-get 'echo apt-get was run; exit 1'

play dpkg-query 'echo "ii "'
run || fail "fails although nothing is missing"
[ ! -s "$played/out" ] || fail "says something although nothing is missing"

play dpkg-query 'for name; do :; done; case $name in socat | gcovr) exit 1 ;; esac; echo "ii "'
! run || fail "succeeds although packages are missing"
grep -qx '    apt-get update && apt-get install --no-install-recommends gcovr socat' "$played/out" ||
    fail "does not say what to ask for"
! grep -q 'apt-get was run' "$played/out" || fail "tries to install without the rights"

play sudo 'shift $(($# - 0)); echo "with rights"'
run || fail "fails although sudo needs no password"
grep -q 'with rights' "$played/out" || fail "does not use sudo"

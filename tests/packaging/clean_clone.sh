#!/bin/bash
# clean_clone.sh PACKAGES
# Does with a clone of what is committed here what a stranger does: ./demo.sh, the commands by hand of
# README.md, the installation; and holds that this installs what PACKAGES of this machine's
# architecture hold. The clone is seen at this checkout's place: what was compiled here is not
# compiled again.
set -euo pipefail
cd "$(dirname "$0")/../.."
. packaging/debian_root.sh

if [ $# -eq 1 ]; then
    place=$(mktemp -d)
    trap 'rm -rf "$place"' EXIT
    git clone -q . "$place/clone"
    cp -r "$(realpath "$1")" "$place/packages"
    as_root unshare --mount bash -c 'mount --bind "$1/clone" "$2" && cd "$2" &&
        tests/packaging/clean_clone.sh "$1/packages" "$1/installed"' bash "$place" "$PWD"
    exit
fi

[ ! -e build ] || { echo "The clone is not clean"; exit 1; }
./demo.sh

commands=$(sed -n '/^By hand/,/^## /s/^    //p' README.md)
[ "$(head -n 1 <<<"$commands")" = "cmake --preset release && cmake --build --preset release" ] || {
    echo "README.md does not say how to build by hand"
    exit 1
}
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
LC_ALL=C.UTF-8 sh -exc "$commands" | tee build/by_hand.log
grep -q '^│ SoC │.*│switch 0: enabled ' build/by_hand.log

DESTDIR=$2 cmake --install build/release >build/install.log

# But for where the two have the same: the prefix, folders of an architecture or of a version, and what
# Debian puts beside each package.
without_places()
{
    sed -E 's,^(\./)+,,; s,^usr/(local/)?,,; s,^(lib/)[a-z0-9_]+-linux-gnu/,\1,; s,\.gz$,,
        s,^lib/python3[.0-9]*/,lib/python3/,; s,^share/doc/python3-orblink/,share/doc/orblink/,
        \,^share/(doc/[a-z0-9-]+/(changelog|copyright)|lintian/.*)$,d' | LC_ALL=C sort
}
architecture=$(dpkg --print-architecture)
for package in "$1"/*_{"$architecture",all}.deb; do
    [[ $package = *-dbgsym_* ]] || dpkg-deb --fsys-tarfile "$package" | tar -t
done | grep -v '/$' | without_places >build/packaged
(cd "$2" && find . ! -type d) | without_places >build/installed_files
[ "$(wc -l <build/packaged)" -gt 150 ] || { echo "Few files in packages"; exit 1; }
diff build/packaged build/installed_files || { echo "Packages and installation differ"; exit 1; }
echo "$(wc -l <build/packaged) files are installed"

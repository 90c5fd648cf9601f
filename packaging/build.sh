#!/bin/bash
# build.sh [--arch amd64|i386|all] [--output DIR] [--cache DIR]
# Makes the Debian packages of this tree, as it is, in DIR (build/packages). No rights are needed.
#   --arch    whose packages: by default this machine's own, with what is installed here. Others are
#             made in a minimal Debian of that architecture
#   --cache   where that system is kept for the next time (build/packages/cache)
set -euo pipefail
cd "$(dirname "$0")/.."
. packaging/debian_root.sh
own=$(dpkg --print-architecture)
architectures=$own
output=$PWD/build/packages
cache=

usage()
{
    sed -n '2,6s/^# //p' "$0" >&2
    exit 2
}

while [ $# -gt 0 ]; do
    [ $# -gt 1 ] || usage
    case $1 in
        --arch)
            case $2 in
                amd64 | i386) architectures=$2 ;;
                all) architectures="amd64 i386" ;;
                *) usage ;;
            esac
            ;;
        --output) output=$(realpath -m "$2") ;;
        --cache) cache=$(realpath -m "$2") ;;
        *) usage ;;
    esac
    shift 2
done
[ -n "$cache" ] || cache=$output/cache

for tool in dpkg-buildpackage:dpkg-dev $([ "$architectures" = "$own" ] || echo mmdebstrap:mmdebstrap); do
    command -v "${tool%:*}" >/dev/null || {
        echo "build.sh: ${tool%:*} is missing: apt-get install ${tool#*:}" >&2
        exit 1
    }
done

if [[ " $architectures " = *" $own "* ]] && ! dpkg-checkbuilddeps debian/control; then
    echo "build.sh: apt-get build-dep ./ installs them" >&2
    exit 1
fi

work=$(mktemp -d)
root=$work/root
trap '[ ! -d "$root" ] || remove_root "$root"; rm -rf "$work"' EXIT

# The files of a checkout, or all of a tree that is none; no build folders. As old as the entry of the
# changelog: files go into packages with their times, and a checkout has others.
copy_tree()
{
    local time
    time=--mtime=@$(dpkg-parsechangelog -S Timestamp)
    mkdir -p "$1"
    if git rev-parse --git-dir >/dev/null 2>&1; then
        git ls-files -z --cached --others --exclude-standard | xargs -0 ls -d 2>/dev/null |
            tar -c "$time" -T - | tar -C "$1" -x
    else
        tar -c "$time" --exclude=./build --exclude=./.git . | tar -C "$1" -x
    fi
}

build_depends()
{
    perl -MDpkg::Control::Info -e \
        'print Dpkg::Control::Info->new("debian/control")->get_source()->{"Build-Depends"} =~ s/\s+/ /gr'
}

build_here()
{
    cd "$work/orblink"
    dpkg-buildpackage -b -uc -us -jauto
}

build_in_root()
{
    local requirements archive
    requirements="build-essential, fakeroot, $(build_depends)"
    archive=$cache/build-$1-$(printf '%s' "$requirements" | sha256sum | cut -c1-8).tar
    make_root "$archive" "$1" "$requirements"
    unpack_root "$archive" "$root"
    as_root mkdir -p "$root$work"
    tar -C "$work" -c orblink | as_root tar -C "$root$work" --no-same-owner -x
    # What is for all architectures is made here.
    in_root "$root" sh -c 'cd "$1/orblink" && dpkg-buildpackage -B -uc -us -jauto' - "$work"
    as_root tar -C "$root$work" -c --exclude=./orblink . | tar -C "$work" --no-same-owner -x
    remove_root "$root"
}

mkdir -p "$output"
for architecture in $architectures; do
    copy_tree "$work/orblink"
    log=$output/$architecture.log
    echo "Building for $architecture"
    # In a process of its own, which ends at the first failure.
    if [ "$architecture" = "$own" ]; then
        (build_here) >"$log" 2>&1 &
    else
        (build_in_root "$architecture") >"$log" 2>&1 &
    fi
    wait $! || {
        tail -n 50 "$log" >&2
        exit 1
    }
    cp "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$output"
    rm -rf "$work"/*
done
ls "$output"/*.deb

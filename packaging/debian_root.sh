# Functions of build.sh and of the packages' test: minimal Debian systems of this machine's release,
# kept as archives, and commands in them. For root and, by a user namespace, for everybody else.

suite=$(. /etc/os-release && echo "$VERSION_CODENAME")

# The mirror that this machine's own packages come from.
mirror_of_this_machine()
{
    apt-get indextargets --format '$(SITE) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' |
        awk -v suite="$suite" '$2 == suite && $3 == "main" && !found { print $1; found = 1 }'
}

as_root()
{
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        unshare --map-root-user --map-auto "$@"
    fi
}

# make_root ARCHIVE ARCHITECTURES REQUIREMENTS [SUITE]: a system with these packages, dependencies
# written as in a control file. One that is there is taken as it is.
make_root()
{
    local archive=$1 architectures=$2 requirements=$3
    [ ! -e "$archive" ] || return 0
    mkdir -p "$(dirname "$archive")"
    mmdebstrap --quiet --variant=apt --architectures="$architectures" --skip=cleanup/apt/lists \
        --customize-hook="chroot \"\$1\" apt-get satisfy -qq -y --no-install-recommends '$requirements'" \
        --customize-hook='chroot "$1" sh -c "apt-mark manual \$(apt-mark showauto); apt-get clean"' \
        "${4:-$suite}" "$archive.part.tar" "$(mirror_of_this_machine)"
    mv "$archive.part.tar" "$archive"
}

unpack_root()
{
    local archive=$1 root=$2
    mkdir -p "$root"
    as_root tar -C "$root" --numeric-owner --exclude='./dev/*' -xf "$archive"
}

remove_root()
{
    as_root rm -rf --one-file-system "$1"
}

# in_root ROOT COMMAND...: with processes, devices and shared memory of its own, and this machine's
# network. What the command has started and left running ends with it.
in_root()
{
    as_root unshare --mount --pid --ipc --uts --fork --kill-child sh -c '
        set -e
        root=$1
        shift
        mount --make-rprivate /
        mount --rbind /dev "$root/dev"
        mount -t tmpfs tmpfs "$root/dev/shm"
        mount -t proc proc "$root/proc"
        mount --rbind /sys "$root/sys"
        cat /etc/resolv.conf >"$root/etc/resolv.conf"
        exec chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
            DEBIAN_FRONTEND=noninteractive "$@"' in_root "$@"
}

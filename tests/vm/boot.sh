#!/bin/bash
# boot.sh [--seconds N] DIRECTORY COMMAND...
# Boots Debian's own kernel and systemd in a virtual machine, runs a command there as root, prints
# what it prints and ends with its status. DIRECTORY keeps the kernel's package between runs, and
# what the kernel has said. What the command needs is named by
#   VM_FILES     files and directories of this machine that are there at the same place
#   VM_PACKAGES  packages of this machine that are there
#   VM_INSTALL   a build that is installed there
#   VM_MODULES   modules of the kernel, in the order in which they are loaded
#   VM_KERNEL    package of the kernel; linux-image-cloud-amd64 unless it is given
#   VM_DEVICES   more of the machine, in QEMU's words
# The machine's third serial line is QEMU's monitor, so that a command there can unplug a cable.
# A machine that takes longer than N seconds (600) is ended: 124. The processor is emulated, which
# works everywhere; VM_ACCEL=kvm takes the real one.
set -euo pipefail
here=$(dirname "$(realpath "$0")")

seconds=600
if [ "${1:-}" = --seconds ]; then
    seconds=$2
    shift 2
fi
directory=$(realpath -m "$1")
shift
mkdir -p "$directory"

# The package that the newest kernel of a flavour is in.
kernel_package()
{
    apt-cache depends "$1" | sed -n 's/.*Depends: \(linux-image-[0-9][^ ]*\)$/\1/p' | head -n 1
}

fetch_kernel()
{
    local package
    package=$(kernel_package "${VM_KERNEL:-linux-image-cloud-amd64}")
    [ -n "$package" ] || { echo "boot.sh: no kernel package; try apt-get update" >&2; exit 1; }
    kernel=$directory/$package
    [ ! -e "$kernel/complete" ] || return 0
    rm -rf "$kernel"
    mkdir -p "$kernel"
    (cd "$kernel" && apt-get download -q "$package" && dpkg-deb -x ./*.deb . && rm ./*.deb) >&2
    touch "$kernel/complete"
}

add_modules()
{
    local root=$1 name module
    mkdir "$root/modules"
    for name in ${VM_MODULES:-}; do
        module=$(find "$kernel/lib/modules" -name "$name.ko*")
        [ -n "$module" ] || { echo "left out, not in this kernel: module $name" >&2; continue; }
        cp "$module" "$root/modules/"
        echo "$name" >>"$root/modules/order"
    done
}

add_installation()
{
    [ -n "${VM_INSTALL:-}" ] || return 0
    DESTDIR=$1 cmake --install "$VM_INSTALL" >"$directory/install.log"
    ldconfig -r "$1"
}

build_root()
{
    local root=$directory/root name
    rm -rf "$root"
    mkdir -p "$root"/{proc,sys,dev,tmp,run,root,var/tmp,etc/systemd/system}
    # shellcheck disable=SC2046,SC2086 # names without blanks
    "$here/make_root.py" "$root" $(printf -- '--package %s ' systemd ${VM_PACKAGES:-}) \
        /bin/busybox /bin/sh /bin/bash /etc/ld.so.conf /etc/ld.so.conf.d ${VM_FILES:-}
    for name in $(busybox --list); do
        [ -e "$root/usr/bin/$name" ] || [ -e "$root/usr/sbin/$name" ] ||
            ln -s busybox "$root/usr/bin/$name"
    done
    add_modules "$root"
    add_installation "$root"
    cp "$here/init" "$root/init"
    cp "$here/command.service" "$root/etc/systemd/system/"
    printf '%q ' "$@" >"$root/command"
    # What this machine has in /tmp stays there, nobody is asked anything, and nothing is kept.
    rm "$root/usr/lib/tmpfiles.d/tmp.conf"
    for name in systemd-firstboot.service systemd-repart.service systemd-journal-flush.service \
        systemd-random-seed.service systemd-update-utmp.service \
        systemd-update-utmp-runlevel.service getty.target; do
        ln -s /dev/null "$root/etc/systemd/system/$name"
    done
    echo "0123456789abcdef0123456789abcdef" >"$root/etc/machine-id"
    echo "root:x:0:0:root:/root:/bin/sh" >"$root/etc/passwd"
    echo "root:x:0:" >"$root/etc/group"
    (cd "$root" && find . | cpio -o -H newc --quiet) >"$directory/root.cpio"
}

boot()
{
    # One processor: on a busy machine two wait for each other.
    # shellcheck disable=SC2086 # words of QEMU's
    timeout --foreground -k 5 "$seconds" qemu-system-x86_64 -accel "${VM_ACCEL:-tcg}" \
        -cpu "${VM_CPU:-qemu64}" -m 2048 -smp 1 -nodefaults -nographic -no-reboot \
        -serial file:"$directory/console" -serial stdio \
        -chardev socket,id=line,path="$sockets/monitor",server=on,wait=off -serial chardev:line \
        -chardev socket,id=monitor,path="$sockets/monitor" -mon chardev=monitor,mode=readline \
        ${VM_DEVICES:-} -kernel "$kernel"/boot/vmlinuz-* \
        -initrd "$directory/root.cpio" \
        -append "console=ttyS0 panic=-1 no_timer_check mitigations=off net.ifnames=0 \
            systemd.unit=command.service" \
        </dev/null | stdbuf -oL tr -d '\r' | tee "$directory/said" | sed -u '/^vm: ends/d'
}

fetch_kernel
build_root "$@"
sockets=$(mktemp -d)
trap 'rm -rf "$sockets"' EXIT
boot || true
status=$(sed -n 's/^vm: ends with \([0-9]*\)$/\1/p' "$directory/said")
if [ -z "$status" ]; then
    echo "boot.sh: the machine did not come to its end; its last words:" >&2
    tail -n 20 "$directory/console" >&2
    exit 124
fi
exit "$status"

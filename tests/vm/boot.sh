#!/bin/bash
# boot.sh [--seconds N] DIRECTORY COMMAND...
# Runs a command as root under Debian's own kernel in a virtual machine, and ends with its status.
# DIRECTORY keeps the kernel's package between runs. What the command needs is named by
#   VM_FILES     files and directories of this machine that are there at the same place, programs
#                with the libraries that they are linked to
#   VM_MODULES   modules of the kernel, in the order in which they are loaded
# A machine that takes longer than N seconds (600) is ended: 124. The processor is emulated, which
# works everywhere; VM_ACCEL=kvm takes the real one.
set -euo pipefail

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
    package=$(kernel_package linux-image-cloud-amd64)
    [ -n "$package" ] || { echo "boot.sh: no kernel package; try apt-get update" >&2; exit 1; }
    kernel=$directory/$package
    [ ! -e "$kernel/complete" ] || return 0
    rm -rf "$kernel"
    mkdir -p "$kernel"
    (cd "$kernel" && apt-get download -q "$package" && dpkg-deb -x ./*.deb . && rm ./*.deb)
    touch "$kernel/complete"
}

with_libraries()
{
    local file
    for file in "$@"; do
        find "$file" \( -type f -o -type l \)
        # The links on the way are taken along as what they lead to.
        find "$file" -type f -perm /111 -exec ldd {} + 2>/dev/null |
            grep -o '/[^ ]*\.so[^ :]*' || true
    done | sort -u
}

build_root()
{
    local root=$directory/root
    rm -rf "$root"
    mkdir -p "$root"/{bin,proc,sys,dev,tmp,run,etc,root,modules,var/tmp,usr/bin,usr/sbin,usr/lib}
    ln -s bin "$root/sbin"
    # shellcheck disable=SC2046 # names of files without blanks
    (cd / && with_libraries /bin/sh ${VM_FILES:-} | sed 's|^/||' | cpio -pdmL --quiet "$root")
    cp /bin/busybox "$root/bin/busybox"
    local name module
    for name in $("$root/bin/busybox" --list); do
        [ -e "$root/bin/$name" ] || [ -e "$root/usr/bin/$name" ] ||
            [ -e "$root/usr/sbin/$name" ] || ln -s busybox "$root/bin/$name"
    done
    for name in ${VM_MODULES:-}; do
        module=$(find "$kernel/lib/modules" -name "$name.ko*")
        [ -n "$module" ] || { echo "left out, not in this kernel: module $name" >&2; continue; }
        cp "$module" "$root/modules/"
        echo "$name" >>"$root/modules/order"
    done
    cp "$(dirname "$0")/init" "$root/init"
    printf '%q ' "$@" >"$root/command"
    echo "root:x:0:0:root:/root:/bin/sh" >"$root/etc/passwd"
    echo "root:x:0:" >"$root/etc/group"
    (cd "$root" && find . | cpio -o -H newc --quiet | gzip -1) >"$directory/root.gz"
}

boot()
{
    timeout --foreground "$seconds" qemu-system-x86_64 -accel "$1" -cpu max -m 1024 -smp 2 \
        -nodefaults -nographic -serial mon:stdio -no-reboot -kernel "$kernel"/boot/vmlinuz-* \
        -initrd "$directory/root.gz" -append "console=ttyS0 quiet panic=-1 no_timer_check net.ifnames=0" \
        </dev/null | stdbuf -oL tr -d '\r' | tee "$directory/console" | sed -n '/vm: begins$/,/^vm: ends/p' |
        sed '1d; /^vm: ends/d'
}

fetch_kernel
build_root "$@"
boot "${VM_ACCEL:-tcg,thread=multi}" || true
status=$(sed -n 's/^vm: ends with \([0-9]*\)$/\1/p' "$directory/console")
if [ -z "$status" ]; then
    echo "boot.sh: the machine did not come to its end; its last words:" >&2
    tail -n 20 "$directory/console" >&2
    exit 124
fi
exit "$status"

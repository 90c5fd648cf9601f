#!/bin/bash
# run.sh BUILD_DIR DIRECTORY
# The tests of the HAL for Linux's own switches under Debian's kernel, in a virtual machine: one
# boot runs them all. Shows each case with its outcome, and their numbers; ends with
# 1 when one failed or none ran. DIRECTORY keeps the kernel's package.
set -euo pipefail
build=$(realpath "$1")
directory=$2
here=$(dirname "$(realpath "$0")")

tools=(/bin/sh /usr/bin/sed /usr/bin/seq /usr/bin/mkdir)
for tool in ip bridge tc; do
    tools+=("$(PATH=$PATH:/usr/sbin:/sbin command -v $tool)")
done
export VM_FILES="$build/tests/linux_switch_test ${tools[*]}"
[ ! -d /etc/iproute2 ] || VM_FILES+=" /etc/iproute2"
export VM_MODULES="llc stp bridge mrp garp 8021q veth dummy sch_ingress cls_flower cls_matchall
    act_gact act_vlan act_mirred"

status=0
"$here/boot.sh" "$directory" "$build/tests/linux_switch_test" --gtest_brief=0 >"$directory/cases" ||
    status=$?
grep -E '^\[ *(OK|FAILED|SKIPPED) *\] [A-Za-z]+\.' "$directory/cases" | sort -u || true
count()
{
    grep -cE "^\[ *$1 *\] [A-Za-z]+\..* \(" "$directory/cases" || true
}
passed=$(count OK)
echo "virtual machine: $passed passed, $(count FAILED) failed, $(count SKIPPED) skipped"
if [ "$status" -ne 0 ] || [ "$passed" -eq 0 ]; then
    cat "$directory/cases"
    exit 1
fi

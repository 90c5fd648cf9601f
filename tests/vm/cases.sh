#!/bin/bash
# cases.sh PATTERN BUILD_DIR SOURCE_DIR I386_BUILD_DIR
# All cases that match, in the virtual machine. What hangs is ended; the next one follows.
only=$1
export ORBLINK_BUILD=$2 ORBLINK_LONG_TESTS=1
build=$2
source=$3
i386=$4
scratch=$(mktemp -d)
longest=300

# suite SECONDS PROGRAM [PATTERN]: those of a test program, of which others need no kernel of its own.
suite()
{
    matching=$("$2" --gtest_list_tests --gtest_filter="${3:-*}" | awk -v only="$only" '
        function matches(name,  pattern) {
            pattern = only
            gsub(/[.]/, "[.]", pattern)
            gsub(/[*]/, ".*", pattern)
            gsub(/:/, "$|^", pattern)
            return name ~ "^" pattern "$"
        }
        /^[^ ]/ { group = $1; next }
        matches(group $1) { printf "%s%s%s", between, group, $1; between = ":" }')
    [ -n "$matching" ] || return 0
    timeout -k 5 "$1" "$2" --gtest_color=no --gtest_filter="$matching" || echo "$2 has ended with $?"
}

is_wanted()
{
    IFS=: read -ra patterns <<<"$only"
    for pattern in "${patterns[@]}"; do
        # shellcheck disable=SC2053 # a pattern
        [[ $name != $pattern ]] || return 0
    done
    return 1
}

# a_case NAME COMMAND...: 77 says that it was skipped, the last line why.
a_case()
{
    name=$1
    shift
    is_wanted || return 0
    echo "[ RUN      ] $name"
    status=0
    # In the background, because what stands before "||" does not end with its first failure, and as
    # jobs, because what a case has started ends with it when it hangs.
    set -m
    (set -e; "$@") >"$scratch/said" 2>&1 &
    job=$!
    (sleep $longest; kill -KILL -- -$job) &
    watch=$!
    set +m
    wait $job 2>/dev/null || status=$?
    kill -- -$watch 2>/dev/null
    cat "$scratch/said"
    [ $status -ne 137 ] || echo "has not ended within $longest s"
    case $status in
        0) echo "[       OK ] $name ()" ;;
        77) echo "[  SKIPPED ] $name ()" ;;
        *) echo "[  FAILED  ] $name ()" ;;
    esac
}

# For commands that must fail.
refused()
{
    if "$@"; then
        echo "was not refused: $*"
        return 1
    fi
}

software_dsa()
{
    for module in dsa_loop rocker netdevsim; do
        if ls /modules/$module.ko* 2>/dev/null; then
            echo "and no case that drives it"
            return 1
        fi
    done
    echo "this kernel has neither dsa_loop nor another switch chip in software"
    return 77
}

suite 2400 "$build/tests/linux_switch_test"
suite 2400 "$build/tests/vboard_traffic_test" '*/Linux:ShownLinuxSwitch.*:Differential.*'
# How long a slot takes on an emulated processor says nothing.
a_case HalCheck.FindsNothing "$source/tests/hals/linux_switch/hal_check.sh" \
    "$build/bin/orblink-hal-check" "$build/lib/liborblink_linux.so" --limit 60000 --patience 60000
a_case SoftwareDsa.IsDrivenAsABridgeIs software_dsa
a_case Demo.HostsAtTheKernelsSwitch "$source/tools/demo_linux_switch.sh" "$build/bin"
. "$(dirname "$0")/users.sh"
. "$(dirname "$0")/drivers.sh"
echo "all suites have ended"

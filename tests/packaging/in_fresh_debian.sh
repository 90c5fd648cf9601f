#!/bin/sh
# In a fresh Debian with the packages in /packages and their users in /consumer. What is typed here is
# what docs/installing.md says.
set -eu

fail()
{
    echo "WRONG: $*"
    exit 1
}

# All files but what records that something was ever installed, caches and backups of them.
all_files()
{
    find / -xdev \( -path /packages -o -path /consumer -o -path /tmp -o -path /dev -o -path /proc -o \
        -path /sys -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o \
        -path /var/lib/dpkg \) -prune -o -print |
        grep -vxE '/etc/(ld\.so\.cache|(passwd|group|shadow|gshadow|subuid|subgid)-|\.pwd\.lock)' | LC_ALL=C sort
}

state_of_the_system()
{
    all_files
    cat /etc/passwd /etc/group
    dpkg-query -W -f '${Package}:${Architecture} ${Status}\n'
}

state_of_the_system >/tmp/before
printf 'APT::Get::Assume-Yes "true";\nAPT::Install-Recommends "false";\n' >/tmp/apt.conf
export APT_CONFIG=/tmp/apt.conf

# shown WORD GUIDE: the block of the guide in which the word stands.
shown()
{
    awk -v word="$1" '/^```/ { if (inside && index(text, word)) { print text; exit }
                               inside = !inside; text = ""; next }
                      inside { text = text $0 "\n" }' "/consumer/$2" >/tmp/shown
    [ -s /tmp/shown ] || fail "nothing with $1 is in $2"
    cat /tmp/shown
}

# documented WORD [GUIDE]: runs these commands.
documented()
{
    shown "$1" "${2:-installing.md}"
    sed -i 's/\(^\|[^a-z]\)sudo /\1/' /tmp/shown
    sh -ex /tmp/shown
}

cd /
documented _amd64.deb
cd /packages
documented _i386.deb
documented 'systemctl enable'
useradd alice
documented usermod
id -Gn alice | grep -qw orblink || fail "alice is no member"
userdel alice

for bits in 64 32; do
    triplet=$([ $bits = 64 ] && echo x86_64-linux-gnu || echo i386-linux-gnu)
    export PKG_CONFIG_LIBDIR=/usr/lib/$triplet/pkgconfig:/usr/share/pkgconfig
    strict="-Wall -Wextra -Werror -m$bits"
    mkdir /tmp/$bits
    cd /tmp/$bits
    gcc $strict /consumer/consumer.c $(pkg-config --cflags --libs orblink) -o with_pkg_config_c
    g++ $strict -x c++ /consumer/consumer.c -x none $(pkg-config --cflags --libs orblink) \
        -o with_pkg_config_cxx
    gcc $strict -shared -fPIC /consumer/hal.c $(pkg-config --cflags --libs orblink-hal) -o hal.so
    gcc $strict /consumer/platform.c $(pkg-config --cflags --libs obplatform) -o platform
    shown 'int main(void)' programs.md >shown.c
    gcc $strict shown.c $(pkg-config --cflags --libs orblink) -o shown_c
    shown '"orblink.hpp"' programs.md >shown.cpp
    g++ -std=c++20 $strict shown.cpp $(pkg-config --cflags --libs orblink) -o shown_cxx
    CFLAGS=-m$bits CXXFLAGS=-m$bits cmake -G Ninja -S /consumer/project -B project
    cmake --build project
    grep -q "/usr/lib/$triplet/cmake/OrbLink" project/CMakeCache.txt || fail "another OrbLink was found"
    for program in ./platform project/platform_with_cmake; do
        said=$($program)
        [ "$said" = "main says with severity 1: 1 of 2" ] || fail "$bits-bit $program says: $said"
    done
    programs="./with_pkg_config_c ./with_pkg_config_cxx project/with_cmake_c project/with_cmake_cxx"
    for program in $programs; do
        file=$(readelf -h $program | grep Class:)
        case $file in *ELF$bits) ;; *) fail "$program is $file" ;; esac
    done
    said=$(orblink-vboard run --board /usr/share/orblink/boards/phy.toml -- sh -c \
        "orblinkctl init >&2; for program in $programs; do \$program; done")
    [ "$(echo $said)" = "1, 2 1, 2 1, 2 1, 2" ] || fail "$bits-bit programs say: $said"
    said=$(orblink-vboard run --board /usr/share/orblink/boards/one_switch.toml --time-scale 0.01 -- \
        sh -c 'orblinkctl init >&2; orblinkctl up 0 >&2; ./shown_c; ./shown_cxx')
    [ "$(echo $said)" = "up up at 1 Gb/s" ] || fail "$bits-bit programs of the guide say: $said"
done

# What was installed for another architecture's programs does not need that architecture's tools.
[ "$(dpkg-query -W -f '${Architecture}' orblink-tools)" = amd64 ] || fail "tools of another architecture"

unset PKG_CONFIG_LIBDIR

# A HAL, from its template to its report.
mkdir /tmp/hal
cd /tmp/hal
for kind in switch phy; do
    cp /usr/share/orblink/templates/${kind}_hal.c switch_hal.c
    documented 'gcc -shared' writing-a-hal.md
done

# A test bench in Python.
shown 'import orblink' programs.md >bench.py
said=$(orblink-vboard run --board /usr/share/orblink/boards/one_switch.toml --time-scale 0.01 -- \
    sh -c 'orblinkctl init >&2; orblinkctl up 0 >&2; python3 bench.py')
[ "$said" = "Port(0, 1) up" ] || fail "Python says: $said"

cd /
rm -rf /tmp/64 /tmp/32 /tmp/hal
documented purge
# Also what others of this system merely suggest.
apt-get autoremove -q -y --purge -o APT::AutoRemove::SuggestsImportant=false \
    -o APT::AutoRemove::RecommendsImportant=false
state_of_the_system >/tmp/after
diff /tmp/before /tmp/after || fail "something is left"
echo "Nothing is left"

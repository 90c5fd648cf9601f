# Where the hosts of traffic.sh are: on the virtual board.
at() { echo "orblink-vboard exec $1 --"; }
interface_of() {
    case $1 in
        soc) echo soc0 ;;
        a) echo lan1 ;;
        b) echo lan2 ;;
        c) echo lan3 ;;
        d) echo lan4 ;;
    esac
}
begin() { :; }
lose_settings() { ctl down 0; }

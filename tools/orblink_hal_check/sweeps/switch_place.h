// Ports of a switch that ordinary calls can name.
#pragma once

namespace halcheck {

struct SwitchPlace {
    int ports;  // how many there are
    int lan;    // a LAN port, with a PHY if any has one
    int rgmii;  // an RGMII port without a PHY, or the first port
};

SwitchPlace PlaceOn(int devIdx);

}  // namespace halcheck

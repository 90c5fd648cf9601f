// One end of a PHY's cable: what it can do.
#pragma once

namespace vboard {

struct LinkPartner {
    bool connected = true;
    bool negotiates = true;  // false: forced to the fastest of its modes
    bool eee = false;
    bool half10 = true;
    bool full10 = true;
    bool half100 = true;
    bool full100 = true;
    bool half1000 = false;
    bool full1000 = true;
    bool full2500 = false;
};

}  // namespace vboard

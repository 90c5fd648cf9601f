// An initialisation of the PHY family, step by step.
#pragma once

#include "tests/phy/phy_fixture.h"

namespace obtest {

inline const Lines kCreateSem = {"sys open(/var/tmp/ethphy_sem, O_RDWR|O_CREAT, 600)",
                                 "sys close()", "sys ftok(/var/tmp/ethphy_sem, 97)",
                                 "sys semget(1, 0x7FF)"};
inline const Lines kCreateRegion = {"sys shm_open(/ethphy_driver, O_RDWR|O_CREAT, 666)",
                                    "sys ftruncate(1332)", "sys close()",
                                    "phy9 [_InitPhyDevices] EP_CreatePhyDevices() Done"};
inline const Lines kMapRegion = {
    "sys shm_init(3, 0, 0)", "sys shm_open(/ethphy_driver, O_RDWR, 666)", "sys mmap(1332, 3, 1)",
    "phy9 [_InitPhyDevices] EP_MapEthphyDevices() Done"};

inline PhyBoard TwoPhys(const std::string& first, const std::string& second)
{
    PhyBoard board{{{}, {}}};
    board.entries[0].halLibName = first;
    board.entries[1].halLibName = second;
    return board;
}

class PhyInitOnce : public PhyTest {
protected:
    int InitOnce(const PhyBoard& board = {{{}}})
    {
        platform.mailbox.push_back(board.Message());
        return ETHPHY_InitOnce();
    }
};

}  // namespace obtest

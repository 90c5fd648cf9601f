// The slots of the HAL table, by theme.
#pragma once

#include <stdint.h>

namespace ieee8023 {

// link.cpp
int GetLink(int devIdx, uint32_t* link, uint32_t* speed, uint32_t* duplex);

// reset.cpp
int Init(void* privateData);
int SetAdminState(int devIdx, int enable);
int ResetDisable(int devIdx, int defConfig);
int ResetEnable(int devIdx);

// counters.cpp
int GetCounters(int devIdx, void* counters);
int ResetCounters(int devIdx);
int Poll(int devIdx);

// features.cpp
int GetCaps(int devIdx, uint32_t* caps);
int SetEeeState(int devIdx, int state);
int ReadChipReg(int devIdx, uint32_t reg, uint16_t* value);
int WriteChipReg(int devIdx, uint32_t reg, int value);

}  // namespace ieee8023

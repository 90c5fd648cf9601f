// The frame of an ETHPHY_ call: prolog, checks, epilog.
#pragma once

#include "phy/call/hal_loader.h"

namespace orblink::phy {

// Once per process, before the region is mapped; logs in the name of the step that maps it.
int StartSharedMemoryService(LogCaller caller);

int _ApiProlog();
void _LibEpilog();
bool ValidateDevIndex(uint8_t devIdx);
bool ValidateHwState(const PhyDeviceRecord& record);

// Holds the semaphore from the prolog to the end of the scope.
class PhyFrame {
public:
    PhyFrame() : entered_(_ApiProlog() == RC_OK) {}

    // Logs, as the operation, that the prolog failed.
    explicit PhyFrame(LogCaller caller);

    ~PhyFrame()
    {
        if (entered_)
            _LibEpilog();
    }

    PhyFrame(const PhyFrame&) = delete;
    PhyFrame& operator=(const PhyFrame&) = delete;

    bool Entered() const { return entered_; }

private:
    bool entered_;
};

// A frame for one PHY: false when the prolog or the index check failed.
class PhyCall {
public:
    // The prolog's failure gets no line of the operation's own.
    explicit PhyCall(uint8_t devIdx) { Find(devIdx); }

    PhyCall(LogCaller caller, uint8_t devIdx) : frame_(caller) { Find(devIdx); }

    explicit operator bool() const { return record_ != nullptr; }
    bool Entered() const { return frame_.Entered(); }
    PhyDeviceRecord& Record() const { return *record_; }

    // For operations that reach the PHY.
    bool Enabled() const { return record_ != nullptr && ValidateHwState(*record_); }

private:
    void Find(uint8_t devIdx)
    {
        if (frame_.Entered() && ValidateDevIndex(devIdx))
            record_ = FindRecord(devIdx);
    }

    PhyFrame frame_;
    PhyDeviceRecord* record_ = nullptr;
};

}  // namespace orblink::phy

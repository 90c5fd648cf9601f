// The frame that every switch operation runs in, as scopes: whatever the path, the semaphore is
// released when the scope ends.
//
//     FinishedLine finished{OB_TRACE_CALLER};         operations that log a "finished" line
//     SwitchCall call{OB_CALLER, DevIdx, &finished};  prolog and device index; logs what is wrong
//     if (!call)
//         return RC_ERROR;
//     ...
//     return finished.Ok();
#pragma once

#include "common/log.h"
#include "common/no_cancellation.h"
#include "switch/call/device.h"

// What nearly every operation goes through is a part of each where the library need not be small: a
// seventh of the instructions of a call less.
#ifdef __i386__
#define OB_IN_EACH_CALL [[gnu::noinline]]
#else
#define OB_IN_EACH_CALL [[gnu::always_inline]] inline
#endif

namespace orblink::sw {

// Holds the switch semaphore with the region mapped and the HALs loaded, or is false.
class SwitchLock {
public:
    SwitchLock();
    ~SwitchLock();
    SwitchLock(const SwitchLock&) = delete;
    SwitchLock& operator=(const SwitchLock&) = delete;

    explicit operator bool() const { return region_ != nullptr; }

    SwitchDeviceRegion& Region() const { return *region_; }

private:
    friend class SwitchCall;

    // A part of whatever constructs it.
    struct InPlace {};
    explicit SwitchLock(InPlace);

    NoCancellation uncancelled_;
    int semaphoreId_;
    SwitchDeviceRegion* region_;
};

// "--->" at the beginning and "<---" at the end, whatever happens between.
class EntryExitLines {
public:
    explicit EntryExitLines(TraceCaller caller);
    ~EntryExitLines();
    EntryExitLines(const EntryExitLines&) = delete;
    EntryExitLines& operator=(const EntryExitLines&) = delete;

private:
    TraceCaller caller_;
};

// "finished OK" or "finished with error!" after the release, once the prolog has succeeded; with
// the device index for operations that print it there.
class FinishedLine {
public:
    explicit FinishedLine(TraceCaller caller, int devIdx = kNone) : caller_(caller), devIdx_(devIdx)
    {
    }
    ~FinishedLine();
    FinishedLine(const FinishedLine&) = delete;
    FinishedLine& operator=(const FinishedLine&) = delete;

    void PrologDone() { prologDone_ = true; }

    int Ok()
    {
        ok_ = true;
        return RC_OK;
    }

private:
    static constexpr int kNone = -1;

    TraceCaller caller_;
    int devIdx_;
    bool prologDone_ = false;
    bool ok_ = false;
};

// The lock and a valid device.
class SwitchCall {
public:
    SwitchCall(LogCaller caller, uint8_t devIdx);
    SwitchCall(LogCaller caller, uint8_t devIdx, FinishedLine* finished)
        : SwitchCall(caller, devIdx)
    {
        if (lock_)
            finished->PrologDone();
    }

    explicit operator bool() const { return static_cast<bool>(device_); }

    SwitchDeviceRegion& Region() const { return lock_.Region(); }
    const SwitchDevice& Device() const { return device_; }
    SwitchDeviceRecord& Record() const { return device_.Record(); }
    SwitchProvConfig& Config() const { return device_.Config(); }
    [[gnu::always_inline]] bool Enabled() const { return device_.Enabled(); }

    template <typename... Params>
    int Hal(int (*HalTable::*slot)(int, Params...), std::type_identity_t<Params>... args) const
    {
        return device_.Hal(slot, args...);
    }

private:
    SwitchLock lock_;
    SwitchDevice device_;
};

}  // namespace orblink::sw

#ifndef __i386__
#include "switch/call/frame_in_place.h"
#endif

// The HAL over this machine's kernel, in a network namespace of the test's own, with the library's
// services played.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "hals/linux_switch/linux_switch_hal.h"
#include "switch/orblink_hal.h"
#include "tests/support/kernel_parts.h"

class LinuxSwitch : public ::testing::Test {
public:
    static constexpr int kCpuPort = 0;
    static constexpr int kLanPorts = 3;  // lan1 to lan3, with host1 to host3 at the other ends
    static constexpr uint8_t kStation[6] = {2, 0, 0, 0, 0, 0xF1};

    static LinuxSwitch* current;

    std::vector<std::string> log;  // lines of severity 1, without function and line
    int internalPort = kCpuPort;
    int failAt = 0;  // the request to the kernel that is not sent, counted from 1; 0: none
    int requests = 0;
    int silentFrom = 0;   // the first request that the kernel does not answer; 0: none
    int waitsInVain = 0;  // for an answer
    // Answers what is asked of ethtool's family, if it is set.
    std::function<std::vector<uint8_t>(const std::vector<uint8_t>& request)> driver;
    std::vector<uint8_t> driversAnswer;  // to the last request
    int refusals = 0;                    // requests that the kernel did not take
    int interruptedLists = 0;  // how many of the next lists have changed while they were read
    uint8_t privateData[1 + OB_HAL_PRIV_DATA_SIZE + 1] = {};  // from byte 1 on, as in the region

protected:
    void SetUp() override;
    void TearDown() override;

    void WriteMapping(const std::string& text);
    int Init() { return OBHAL_HalFuncs.Init(privateData + 1); }
    // Init and ResetSwitch, which must succeed.
    void BringUp();

    // A command of the shell, which must succeed; its output.
    std::string Sh(const std::string& command);
    bool Try(const std::string& command);
    nlohmann::json Json(const std::string& command);
    // Everything that the kernel has of links, VLANs and filters, in words.
    std::string KernelState();
    // The kernel shows whether a link is up a moment after it has become so.
    std::string StateInTheEnd(const std::string& expected);
    // Fails each request of the slot in turn, and looks for what is left; the slot itself, without
    // a fault, ends the row.
    void FailEachRequest(const std::function<int()>& slot);
    // "1 pvid untagged, 5": the VLANs of an interface.
    std::string Vlans(const std::string& interface);

    // Broadcasts of a station.
    void SendFrames(const char* interface, int count, size_t size);

    std::string directory;
};

inline const struct OBHAL_HalFuncs& Hal()
{
    return OBHAL_HalFuncs;
}

// For what not every kernel has.
#define SKIP_WITHOUT_VLANS()            \
    if (!support::KernelFiltersVlans()) \
    GTEST_SKIP() << "this kernel's bridge has no VLAN filtering"
#define SKIP_WITHOUT_FILTERS()        \
    if (!support::KernelHasFilters()) \
    GTEST_SKIP() << "this kernel lacks flower, matchall or the actions"

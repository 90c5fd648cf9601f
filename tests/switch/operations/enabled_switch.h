// One switch of eight ports, as brought up, with the default configuration.
#pragma once

#include "tests/support/switch_fixture.h"

namespace obtest {

class EnabledSwitch : public SwitchTest {
protected:
    // No call leaves the semaphore taken or given twice.
    void TearDown() override { EXPECT_EQ(SemaphoreValue(), 1); }

    SwitchDeviceRecord& record = PrepareRecord();
    SwitchProvConfig& config = record.config;

private:
    SwitchDeviceRecord& PrepareRecord()
    {
        InitEnabled();
        return Record(0);
    }
};

}  // namespace obtest

// A HAL library's file name out of a board entry.
#pragma once

#include <cstring>

#include "board/board_services.h"

namespace orblink {

// A copy that ends in a NUL whatever the 32 bytes hold.
class HalName {
public:
    explicit HalName(const char (&field)[OB_HAL_NAME_SIZE])
    {
        memcpy(text_, field, OB_HAL_NAME_SIZE);
        text_[OB_HAL_NAME_SIZE] = '\0';
    }

    const char* Text() const { return text_; }
    bool IsEmpty() const { return text_[0] == '\0'; }

private:
    char text_[OB_HAL_NAME_SIZE + 1];
};

}  // namespace orblink

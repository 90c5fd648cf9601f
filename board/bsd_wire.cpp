#include "board/bsd_wire.h"

#include <string.h>

#include "common/result.h"

namespace orblink {

int BuildBsdAck(void* Msg, uint32_t* Size)
{
    const MainMsg ack = {htobe32(kMsgAck), 0};
    memcpy(Msg, &ack, sizeof(ack));
    *Size = sizeof(ack);
    return RC_OK;
}

}  // namespace orblink

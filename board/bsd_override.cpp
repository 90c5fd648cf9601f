// In a file of its own: the receiver's call then goes through the dynamic symbol, and a program
// that defines it brings its own source of board data.
#include "board/board_services.h"
#include "common/log.h"

using namespace orblink;

int OBOS_InitBsdFromIni(SwitchBsd*)
{
    OB_INFO("OBOS_InitBsdFromIni NOT IMPLEMETED");
    return RC_OK;
}

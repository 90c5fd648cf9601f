// Board data that come over the mailbox in another order than the families are initialised in.
//
// The library acknowledges a message before it looks at it. One that was meant for the other family
// would be gone: a board that has PHYs alone, or sends theirs first, could not be initialised
// without knowing that. While a sorter is in force it takes the mailbox client's place for the
// library, keeps what belongs to the other family and receives again; the other family's
// initialisation, in this or in another child of this process, gets what was kept.
#pragma once

#include "hwmbox/hwmbox.h"
#include "tools/orblinkctl/access/shared_state.h"

namespace ctl {

class BoardDataSorter {
public:
    // Failure when there is no memory to keep a message in.
    BoardDataSorter();
    ~BoardDataSorter();
    BoardDataSorter(const BoardDataSorter&) = delete;
    BoardDataSorter& operator=(const BoardDataSorter&) = delete;

    // From here on the calling process initialises this family.
    void SortFor(Family family);

    // Whether the family got a message that had been kept.
    bool HandedOver() const { return handedOver_; }

    // HWMB_Start of a subject, with the same result.
    int Receive(uint16_t appid, uint8_t mid, MsgBuilder builder, MsgParser parser, void* dest,
                int destSize);

private:
    struct Message;

    bool Keep(const void* received, uint32_t size);
    static int Parse(void* received, uint32_t size, void* dest, int destSize);

    Message* kept_;  // shared with the processes that are forked from here
    Family family_ = Family::kSwitch;
    bool handedOver_ = false;
    bool misplaced_ = false;
    MsgParser parser_ = nullptr;
};

// The one in force; null when messages go to whom the library gives them.
BoardDataSorter* CurrentSorter();

}  // namespace ctl

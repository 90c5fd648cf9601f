// Opening the board's files, asking about them, and writing to attributes.
#pragma once

#include "virtual_board/board/board_side.h"
#include "virtual_board/seam/board_files.h"
#include "virtual_board/seam/target.h"
#include "virtual_board/seam/verdict.h"

namespace vboard::seam {

class FileCalls {
public:
    FileCalls(BoardSide& board, bool privateNames) : board_{board}, privateNames_{privateNames} {}

    Verdict Open(const Target& target);
    Verdict Stat(const Target& target) const;
    Verdict Access(const Target& target) const;
    Verdict Unlink(const Target& target) const;
    Verdict ChangeMode(const Target& target) const;
    Verdict GetSemaphore(const Target& target) const;

    // A write that no mailbox has taken.
    Verdict Write(const Target& target) const;
    Verdict LaneRequest(const Target& target) const;

private:
    struct OpenArguments {
        int directory;
        uint64_t path;
        int flags;
        uint32_t mode;
    };
    static OpenArguments ReadOpenArguments(const Target& target);
    Verdict OpenPrivate(const Target& target, const BoardFile& file,
                        const OpenArguments& arguments) const;
    Verdict OpenAttribute(const Target& target, const BoardFile& file, int flags);
    Verdict OpenLaneDevice(const Target& target, const BoardFile& file, int flags) const;

    BoardSide& board_;
    bool privateNames_;
    bool writableGiven_ = false;  // spares every other program's writes a look
};

}  // namespace vboard::seam

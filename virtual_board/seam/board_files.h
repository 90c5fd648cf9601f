// The files that the board has in place of the machine: the attributes of the platform's devices,
// the lane driver's device and, where the board's names are private, what the library shares
// between processes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "virtual_board/board/wire.h"
#include "virtual_board/seam/target.h"

namespace vboard::seam {

struct BoardFile {
    enum class Kind : uint8_t { kAttribute, kLaneDevice, kPrivateName };

    Kind kind;
    uint32_t index;  // of wire::kAttributePaths or wire::kPrivatePaths
    const char* path;
};

// The file that the caller means by a path. A path through links of directories is not followed.
std::optional<BoardFile> FindFile(const Target& target, int directory, uint64_t path,
                                  bool privateNames);

// A descriptor of an attribute or of the lane device, as open() with these flags gives it. What is
// read from it is `text`; every write that is not answered elsewhere fails.
UniqueFd MakeDescriptor(const BoardFile& file, const std::string& text, int flags);

// The attribute behind an open descriptor of the caller that may be written to.
std::optional<wire::Attribute> WritableAttribute(const Target& target, int fd);
bool IsLaneDevice(const Target& target, int fd);

}  // namespace vboard::seam

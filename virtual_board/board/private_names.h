// Names of the board's own for what the library shares between processes, on machines that refuse
// namespaces: the two shared regions, the two key files, and the semaphores that are named by them.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/board/wire.h"

namespace vboard {

class PrivateNames {
public:
    // In an empty directory of the board's own. Semaphores go with this object.
    explicit PrivateNames(std::string ownDirectory) : directory_{std::move(ownDirectory)} {}
    PrivateNames(const PrivateNames&) = delete;
    PrivateNames& operator=(const PrivateNames&) = delete;
    ~PrivateNames();

    // Each 0 or errno. The index is that of wire::kPrivatePaths.
    int Open(uint32_t index, const wire::PrivateOpen& open, UniqueFd& opened) const;
    int Stat(uint32_t index, struct statx& facts) const;
    int Unlink(uint32_t index) const;
    int ChangeMode(uint32_t index, mode_t mode) const;

    // Whether a key was made from one of the key files.
    bool IsPrivate(key_t key) const;
    int GetSemaphore(const wire::SemaphoreGet& get, int& id);

private:
    std::string PathOf(uint32_t index) const;

    std::string directory_;
    std::map<key_t, int> semaphores_;
};

}  // namespace vboard

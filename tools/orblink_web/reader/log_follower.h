// The library's lines in the system log.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tools/orblinkctl/access/unique_descriptor.h"

namespace web {

class LogFollower {
public:
    // A file that is not there may come later.
    explicit LogFollower(std::string path);

    // Lines that were written since the last call; at first those of the file's end. A file that
    // was put in place of this one or cut is read from its beginning.
    std::vector<std::string> NewLines();

private:
    bool Open();
    void Take(std::vector<std::string>& lines);

    std::string path_;
    ctl::UniqueDescriptor file_;
    ino_t inode_ = 0;
    off_t offset_ = 0;
    bool first_ = true;
    std::string unfinished_;
};

}  // namespace web

// What the file of a library says without being loaded.
#pragma once

#include <string>
#include <vector>

namespace halcheck {

struct LibraryFile {
    std::string complaint;  // "" when it can be loaded into this program
    bool hasSwitchTable;
    bool hasPhyTable;
    std::vector<std::string> apiFunctions;  // of the API, that it calls
};

LibraryFile ReadLibraryFile(const std::string& path);

}  // namespace halcheck

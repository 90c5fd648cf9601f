#include "tools/orblinkctl/access/system_log.h"

#include <regex>

namespace ctl {

bool IsLibraryLine(const std::string& line)
{
    static const std::regex site("(^|[^A-Za-z0-9_])_?[A-Z][A-Za-z0-9_]*:[0-9]+ ");
    return std::regex_search(line, site);
}

}  // namespace ctl

// A compressed archive of files held in memory.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ctl {

using ArchiveFile = std::pair<std::string, std::string>;

// Writes a .tar.gz; the compression is that of gzip(1).
void WriteArchive(const std::string& path, const std::vector<ArchiveFile>& files);

}  // namespace ctl

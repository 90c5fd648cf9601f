#include "tools/orblinkctl/output/archive.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/unique_descriptor.h"
#include "tools/orblinkctl/output/file.h"

namespace ctl {

namespace {

constexpr size_t kBlock = 512;

// The fields of a ustar header that matter here.
struct Header {
    char name[100];
    char mode[8];
    char owner[8];
    char group[8];
    char size[12];
    char time[12];
    char checksum[8];
    char type;
    char linkName[100];
    char magic[8];
    char rest[247];
};
static_assert(sizeof(Header) == kBlock);

std::string HeaderBlock(const std::string& name, size_t size)
{
    Header header = {};
    std::snprintf(header.name, sizeof header.name, "%s", name.c_str());
    std::snprintf(header.mode, sizeof header.mode, "%07o", 0644U);
    std::snprintf(header.owner, sizeof header.owner, "%07o", 0U);
    std::snprintf(header.group, sizeof header.group, "%07o", 0U);
    std::snprintf(header.size, sizeof header.size, "%011zo", size);
    std::snprintf(header.time, sizeof header.time, "%011llo",
                  static_cast<unsigned long long>(std::time(nullptr)));
    header.type = '0';
    std::memcpy(header.magic, "ustar\00000", sizeof header.magic);
    std::memset(header.checksum, ' ', sizeof header.checksum);
    unsigned sum = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(&header);
    for (size_t i = 0; i < kBlock; ++i)
        sum += bytes[i];
    std::snprintf(header.checksum, sizeof header.checksum, "%06o", sum);
    return {reinterpret_cast<const char*>(&header), kBlock};
}

std::string Tar(const std::vector<ArchiveFile>& files)
{
    std::string tar;
    for (const auto& [name, content] : files) {
        tar += HeaderBlock(name, content.size()) + content;
        tar.append((kBlock - content.size() % kBlock) % kBlock, '\0');
    }
    return tar.append(2 * kBlock, '\0');
}

[[noreturn]] void FailOn(const std::string& what)
{
    throw Failure{kFailed, what + ": " + std::strerror(errno)};
}

// The writing end of a pipe into gzip, whose output goes to a file.
UniqueDescriptor StartGzip(int output, pid_t& child)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        FailOn("pipe");
    const UniqueDescriptor theirs(ends[0]);
    UniqueDescriptor ours(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, theirs.Get(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    char name[] = "gzip";
    char option[] = "-nc";
    char* arguments[] = {name, option, nullptr};
    errno = posix_spawnp(&child, "gzip", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (errno != 0)
        FailOn("gzip");
    return ours;
}

bool WriteAll(int file, const std::string& text)
{
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = write(file, text.data() + done, text.size() - done);
        if (count < 0)
            return false;
        done += static_cast<size_t>(count);
    }
    return true;
}

}  // namespace

void WriteArchive(const std::string& path, const std::vector<ArchiveFile>& files)
{
    OutputFile output(path);
    pid_t child = 0;
    UniqueDescriptor input = StartGzip(output.Descriptor(), child);
    const bool written = WriteAll(input.Get(), Tar(files));
    input = UniqueDescriptor();  // the end of what it reads
    int status = 0;
    waitpid(child, &status, 0);
    if (!written || status != 0)
        throw Failure{kFailed, path + ": gzip could not write it"};
    output.Keep();
}

}  // namespace ctl

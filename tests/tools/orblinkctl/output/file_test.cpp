// Files that are written: never destroyed, never half-written.
#include "tools/orblinkctl/output/file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tools/orblinkctl/access/failure.h"

namespace ctl {
namespace {

namespace fs = std::filesystem;

class WrittenFile : public testing::Test {
protected:
    WrittenFile()
    {
        std::string name = "/tmp/orblinkctl-file.XXXXXX";
        folder_ = mkdtemp(name.data());
    }
    ~WrittenFile() override { fs::remove_all(folder_); }

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }

    static std::string Contents(const std::string& path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    size_t Entries() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), {}));
    }

    static struct stat Status(const std::string& path)
    {
        struct stat status = {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
        return status;
    }

    static std::string Complaint(const std::string& path)
    {
        try {
            WriteFile(path, "text");
        } catch (const Failure& failure) {
            return failure.text;
        }
        return "no complaint";
    }

    std::string folder_;
};

TEST_F(WrittenFile, IsMadeCompleteAndAlone)
{
    WriteFile(Path("a"), "one\n");
    EXPECT_EQ(Contents(Path("a")), "one\n");
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(WrittenFile, KeepsModeAndOwnerOfTheOldOne)
{
    std::ofstream(Path("a")) << "old and longer\n";
    chmod(Path("a").c_str(), 0640);
    const bool root = geteuid() == 0;
    ASSERT_TRUE(!root || chown(Path("a").c_str(), 1000, 1001) == 0);
    const struct stat before = Status(Path("a"));
    WriteFile(Path("a"), "new\n");
    const struct stat after = Status(Path("a"));
    EXPECT_EQ(Contents(Path("a")), "new\n");
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_NE(after.st_ino, before.st_ino) << "written in place: a reader could see half of it";
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(WrittenFile, AReaderOfTheOldOneKeepsIt)
{
    std::ofstream(Path("a")) << "old\n";
    std::ifstream reader(Path("a"));
    WriteFile(Path("a"), "new\n");
    std::string line;
    std::getline(reader, line);
    EXPECT_EQ(line, "old");
}

TEST_F(WrittenFile, ASymbolicLinkStaysAndItsTargetIsWritten)
{
    std::ofstream(Path("target")) << "old\n";
    fs::create_symlink("target", Path("link"));
    WriteFile(Path("link"), "new\n");
    EXPECT_TRUE(S_ISLNK(Status(Path("link")).st_mode));
    EXPECT_EQ(Contents(Path("target")), "new\n");
}

TEST_F(WrittenFile, ADeviceStaysADevice)
{
    EXPECT_EQ(Complaint("/dev/full"), "/dev/full: No space left on device");
    EXPECT_TRUE(S_ISCHR(Status("/dev/full").st_mode));
    WriteFile("/dev/null", "text");
    EXPECT_TRUE(S_ISCHR(Status("/dev/null").st_mode));
}

TEST_F(WrittenFile, AFifoStaysAFifo)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] { read = Contents(Path("fifo")); });
    WriteFile(Path("fifo"), "text\n");
    reader.join();
    EXPECT_EQ(read, "text\n");
    EXPECT_TRUE(S_ISFIFO(Status(Path("fifo")).st_mode));
}

// Whoever guesses a temporary name could point it at another file.
TEST_F(WrittenFile, APlantedUnfinishedNameIsNotFollowed)
{
    std::ofstream(Path("victim")) << "untouched\n";
    fs::create_symlink("victim", Path("a.unfinished"));
    WriteFile(Path("a"), "new\n");
    EXPECT_EQ(Contents(Path("victim")), "untouched\n");
    EXPECT_EQ(Contents(Path("a")), "new\n");
}

TEST_F(WrittenFile, ComplaintsNameTheFileOfTheUser)
{
    EXPECT_EQ(Complaint(Path("absent/a")), Path("absent/a") + ": No such file or directory");
    EXPECT_EQ(Complaint(folder_), folder_ + ": Is a directory");
}

TEST_F(WrittenFile, WhatIsNotKeptLeavesTheOldOne)
{
    std::ofstream(Path("a")) << "old\n";
    {
        OutputFile file(Path("a"));
        file.Write("half");
    }
    EXPECT_EQ(Contents(Path("a")), "old\n");
    EXPECT_EQ(Entries(), 1U);
}

}  // namespace
}  // namespace ctl

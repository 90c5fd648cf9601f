// Files that the parser must not be given.
#include "tools/orblinkctl/access/toml_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"

namespace ctl {
namespace {

class TomlFile : public testing::Test {
protected:
    ~TomlFile() override { unlink(path.c_str()); }

    // What is said about a file of that text; empty when it is read.
    std::string Complaint(const std::string& text) const
    {
        std::ofstream(path, std::ios::binary) << text;
        return ComplaintAbout(path);
    }

    static std::string ComplaintAbout(const std::string& file)
    {
        try {
            ReadTomlFile(file);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, kUsage);
            return failure.text;
        }
        return "";
    }

    const std::string path = testing::TempDir() + "toml_file." + std::to_string(getpid());
};

TEST_F(TomlFile, IsReadWhole)
{
    EXPECT_EQ(Complaint("[switch.0]\nmtu = 1600\n"), "");
    EXPECT_EQ(ReadTomlFile(path)["switch"]["0"]["mtu"], 1600);
    EXPECT_THAT(Complaint("mtu = 1600\nled = \n"), testing::StartsWith(path + ":2:7: "));
}

TEST_F(TomlFile, ThatTheParserWouldChokeOnIsRefusedAtOnce)
{
    std::string deep = "a";
    for (int i = 0; i < 30'000; ++i)
        deep += ".a";
    EXPECT_EQ(Complaint(deep + " = 1\n"), path + ":1:34: expected at most 16 dots in a key");
    std::string keys;
    for (int i = 0; i < 300'000; ++i)
        keys += "k" + std::to_string(i) + "=1\n";
    EXPECT_EQ(Complaint(keys), path + ":1:1: expected a file of at most 64 KiB");
}

TEST_F(TomlFile, ThatIsNoRegularFileIsRefused)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    for (const std::string& file : {std::string("/"), std::string("/dev/zero"), path})
        EXPECT_EQ(ComplaintAbout(file), file + ": is no regular file");
    EXPECT_EQ(ComplaintAbout("/no/such/file"), "/no/such/file: No such file or directory");
}

}  // namespace
}  // namespace ctl

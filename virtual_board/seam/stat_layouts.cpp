#include "virtual_board/seam/stat_layouts.h"

#include <sys/sysmacros.h>

#include <cstring>

namespace vboard::seam {
namespace {

#pragma pack(push, 1)
struct Time32 {
    uint32_t seconds;
    uint32_t nanoseconds;
};
struct Time64 {
    uint64_t seconds;
    uint64_t nanoseconds;
};

// stat(), lstat(), newfstatat() of x86-64.
struct StatX86_64 {
    uint64_t dev, ino, nlink;
    uint32_t mode, uid, gid, padding;
    uint64_t rdev, size, blockSize, blocks;
    Time64 atime, mtime, ctime;
    uint64_t unused[3];
};

// stat() and lstat() of i386, with 32-bit sizes.
struct Stat32I386 {
    uint32_t dev, ino;
    uint16_t mode, nlink, uid, gid;
    uint32_t rdev, size, blockSize, blocks;
    Time32 atime, mtime, ctime;
    uint32_t unused[2];
};

// stat64(), lstat64(), fstatat64() of i386.
struct Stat64I386 {
    uint64_t dev;
    uint8_t padding1[4];
    uint32_t lowIno, mode, nlink, uid, gid;
    uint64_t rdev;
    uint8_t padding2[4];
    uint64_t size;
    uint32_t blockSize;
    uint64_t blocks;
    Time32 atime, mtime, ctime;
    uint64_t ino;
};
#pragma pack(pop)

static_assert(sizeof(StatX86_64) == 144 && offsetof(StatX86_64, size) == 48);
static_assert(sizeof(Stat32I386) == 64 && offsetof(Stat32I386, atime) == 32);
static_assert(sizeof(Stat64I386) == 96 && offsetof(Stat64I386, size) == 44);

// As the kernel packs device numbers for user space.
uint64_t Device(uint32_t major, uint32_t minor)
{
    return (minor & 0xFFU) | major << 8 | (minor & ~0xFFU) << 12;
}

template <typename Time>
Time TimeOf(const statx_timestamp& time)
{
    Time value{};
    value.seconds = static_cast<decltype(value.seconds)>(time.tv_sec);
    value.nanoseconds = time.tv_nsec;
    return value;
}

// What all three layouts have.
template <typename Layout, typename Time>
Layout Common(const struct statx& facts)
{
    Layout stat{};
    stat.dev = static_cast<decltype(stat.dev)>(Device(facts.stx_dev_major, facts.stx_dev_minor));
    stat.rdev =
        static_cast<decltype(stat.rdev)>(Device(facts.stx_rdev_major, facts.stx_rdev_minor));
    stat.ino = static_cast<decltype(stat.ino)>(facts.stx_ino);
    stat.mode = facts.stx_mode;
    stat.nlink = static_cast<decltype(stat.nlink)>(facts.stx_nlink);
    stat.uid = static_cast<decltype(stat.uid)>(facts.stx_uid);
    stat.gid = static_cast<decltype(stat.gid)>(facts.stx_gid);
    stat.size = static_cast<decltype(stat.size)>(facts.stx_size);
    stat.blockSize = static_cast<decltype(stat.blockSize)>(facts.stx_blksize);
    stat.blocks = static_cast<decltype(stat.blocks)>(facts.stx_blocks);
    stat.atime = TimeOf<Time>(facts.stx_atime);
    stat.mtime = TimeOf<Time>(facts.stx_mtime);
    stat.ctime = TimeOf<Time>(facts.stx_ctime);
    return stat;
}

template <typename Layout>
std::vector<uint8_t> Bytes(const Layout& layout)
{
    std::vector<uint8_t> bytes(sizeof layout);
    memcpy(bytes.data(), &layout, sizeof layout);
    return bytes;
}

}  // namespace

std::vector<uint8_t> StatBytes(const struct statx& facts, Call call, bool i386)
{
    if (call == Call::kStatX)
        return Bytes(facts);
    if (!i386)
        return Bytes(Common<StatX86_64, Time64>(facts));
    if (call == Call::kStat32 || call == Call::kLinkStat32)
        return Bytes(Common<Stat32I386, Time32>(facts));
    auto stat = Common<Stat64I386, Time32>(facts);
    stat.lowIno = static_cast<uint32_t>(facts.stx_ino);
    return Bytes(stat);
}

}  // namespace vboard::seam

#include "virtual_board/seam/file_calls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "virtual_board/seam/carried_bytes.h"
#include "virtual_board/seam/stat_layouts.h"

namespace vboard::seam {
namespace {

constexpr uint16_t kAttributeMode = S_IFREG | 0644;
constexpr uint16_t kStateMode = S_IFREG | 0444;
constexpr uint16_t kLaneMode = S_IFCHR | 0666;
constexpr uint32_t kLaneMajor = 10;
constexpr uint32_t kLaneMinor = 243;
constexpr uint32_t kAttributeSize = 4096;  // as the kernel says of every attribute

bool IsSystemState(const BoardFile& file)
{
    return file.kind == BoardFile::Kind::kAttribute &&
           file.index == static_cast<uint32_t>(wire::Attribute::kSystemState);
}

struct statx FactsOf(const BoardFile& file)
{
    struct statx facts {};
    facts.stx_mask = STATX_BASIC_STATS;
    facts.stx_blksize = kAttributeSize;
    facts.stx_nlink = 1;
    facts.stx_ino = file.index + 1;
    if (file.kind == BoardFile::Kind::kLaneDevice) {
        facts.stx_mode = kLaneMode;
        facts.stx_rdev_major = kLaneMajor;
        facts.stx_rdev_minor = kLaneMinor;
    } else {
        facts.stx_mode = IsSystemState(file) ? kStateMode : kAttributeMode;
        facts.stx_size = kAttributeSize;
    }
    return facts;
}

// The call's place for the answer.
size_t StatArgument(Call call)
{
    if (call == Call::kStatX)
        return 4;
    return call == Call::kStatAt ? 2 : 1;
}

bool IsAtCall(Call call)
{
    return call == Call::kOpenAt || call == Call::kOpenAt2 || call == Call::kStatAt ||
           call == Call::kStatX || call == Call::kAccessAt || call == Call::kAccessAt2 ||
           call == Call::kUnlinkAt || call == Call::kChangeModeAt;
}

std::optional<BoardFile> FileOfCall(const Target& target, bool privateNames)
{
    const bool at = IsAtCall(*target.Call());
    return FindFile(target, at ? target.IntArgument(0) : AT_FDCWD, target.Argument(at ? 1 : 0),
                    privateNames);
}

std::string Text(const Reply& reply)
{
    return {reply.data.begin(), reply.data.end()};
}

Verdict HandInFile(UniqueFd descriptor, int flags)
{
    return descriptor ? HandIn(std::move(descriptor), (flags & O_CLOEXEC) != 0) : Fail(ENFILE);
}

}  // namespace

FileCalls::OpenArguments FileCalls::ReadOpenArguments(const Target& target)
{
    const auto mode = [&](size_t index) { return static_cast<uint32_t>(target.Argument(index)); };
    switch (*target.Call()) {
        case Call::kCreate:
            return {AT_FDCWD, target.Argument(0), O_CREAT | O_WRONLY | O_TRUNC, mode(1)};
        case Call::kOpenAt:
            return {target.IntArgument(0), target.Argument(1), target.IntArgument(2), mode(3)};
        case Call::kOpenAt2: {
            const uint64_t how = target.Argument(2);
            return {target.IntArgument(0), target.Argument(1),
                    static_cast<int>(target.ReadAs<uint64_t>(how)),
                    static_cast<uint32_t>(target.ReadAs<uint64_t>(how + sizeof(uint64_t)))};
        }
        default:
            return {AT_FDCWD, target.Argument(0), target.IntArgument(1), mode(2)};
    }
}

Verdict FileCalls::OpenPrivate(const Target& target, const BoardFile& file,
                               const OpenArguments& arguments) const
{
    const wire::PrivateOpen open{arguments.flags, arguments.mode};
    Reply reply = board_.Ask({target.Process(), wire::Op::kPrivateOpen, file.index, BytesOf(open)});
    return reply.error != 0 ? Fail(reply.error)
                            : HandInFile(std::move(reply.descriptor), arguments.flags);
}

Verdict FileCalls::OpenAttribute(const Target& target, const BoardFile& file, int flags)
{
    const int access = flags & O_ACCMODE;
    Reply opened;
    if (access != O_RDONLY)
        opened = board_.Ask({target.Process(), wire::Op::kAttributeOpen, file.index});
    if (opened.error == 0 && access != O_WRONLY)
        opened = board_.Ask({target.Process(), wire::Op::kAttributeRead, file.index});
    if (opened.error != 0)
        return Fail(opened.error);
    writableGiven_ = writableGiven_ || access != O_RDONLY;
    return HandInFile(MakeDescriptor(file, Text(opened), flags), flags);
}

Verdict FileCalls::OpenLaneDevice(const Target& target, const BoardFile& file, int flags) const
{
    const Reply opened = board_.Ask({target.Process(), wire::Op::kLaneOpen});
    return opened.error != 0 ? Fail(opened.error)
                             : HandInFile(MakeDescriptor(file, {}, flags), flags);
}

Verdict FileCalls::Open(const Target& target)
{
    // The arguments of openat2() cost a look at memory of their own: the name first.
    const auto file = FileOfCall(target, privateNames_);
    if (!file)
        return Continue();
    const OpenArguments arguments = ReadOpenArguments(target);
    if ((arguments.flags & O_DIRECTORY) != 0)
        return Fail(ENOTDIR);
    if (file->kind == BoardFile::Kind::kPrivateName)
        return OpenPrivate(target, *file, arguments);
    if ((arguments.flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL))
        return Fail(EEXIST);
    if (file->kind == BoardFile::Kind::kLaneDevice)
        return OpenLaneDevice(target, *file, arguments.flags);
    return OpenAttribute(target, *file, arguments.flags);
}

Verdict FileCalls::Stat(const Target& target) const
{
    const auto file = FileOfCall(target, privateNames_);
    if (!file)
        return Continue();
    struct statx facts = FactsOf(*file);
    if (file->kind == BoardFile::Kind::kPrivateName) {
        const Reply reply = board_.Ask({target.Process(), wire::Op::kPrivateStat, file->index});
        if (reply.error != 0 || !ReadReply(reply, facts))
            return Fail(reply.error != 0 ? reply.error : EIO);
    }
    const auto bytes = StatBytes(facts, *target.Call(), target.Is32Bit());
    target.Write(target.Argument(StatArgument(*target.Call())), bytes.data(), bytes.size());
    return Return(0);
}

Verdict FileCalls::Access(const Target& target) const
{
    const auto file = FileOfCall(target, privateNames_);
    if (!file)
        return Continue();
    const int wanted = target.IntArgument(IsAtCall(*target.Call()) ? 2 : 1);
    if (file->kind == BoardFile::Kind::kPrivateName)
        return Outcome(board_.Ask({target.Process(), wire::Op::kPrivateStat, file->index}).error);
    const bool refused = (wanted & X_OK) != 0 || ((wanted & W_OK) != 0 && IsSystemState(*file));
    return Outcome(refused ? EACCES : 0);
}

Verdict FileCalls::Unlink(const Target& target) const
{
    const auto file = FileOfCall(target, privateNames_);
    if (!file || file->kind != BoardFile::Kind::kPrivateName)
        return Continue();
    return Outcome(board_.Ask({target.Process(), wire::Op::kPrivateUnlink, file->index}).error);
}

Verdict FileCalls::ChangeMode(const Target& target) const
{
    const auto file = FileOfCall(target, privateNames_);
    if (!file || file->kind != BoardFile::Kind::kPrivateName)
        return Continue();
    const auto mode =
        static_cast<uint32_t>(target.Argument(*target.Call() == Call::kChangeModeAt ? 2 : 1));
    const wire::Op op = wire::Op::kPrivateMode;
    return Outcome(board_.Ask({target.Process(), op, file->index, BytesOf(mode)}).error);
}

Verdict FileCalls::GetSemaphore(const Target& target) const
{
    const wire::SemaphoreGet get{target.IntArgument(0), target.IntArgument(1),
                                 target.IntArgument(2)};
    const Reply reply = board_.Ask({target.Process(), wire::Op::kSemaphoreGet, 0, BytesOf(get)});
    if (reply.error == 0 && reply.result == wire::kNotPrivate)
        return Continue();
    return reply.error != 0 ? Fail(reply.error) : Return(reply.result);
}

Verdict FileCalls::Write(const Target& target) const
{
    if (!writableGiven_)
        return Continue();
    const auto attribute = WritableAttribute(target, target.IntArgument(0));
    if (!attribute)
        return Continue();
    const auto text = CarriedBytes(target, kAttributeSize);
    if (text.empty())
        return Return(0);
    const auto index = static_cast<uint32_t>(*attribute);
    const Reply reply = board_.Ask({target.Process(), wire::Op::kAttributeWrite, index, text});
    return reply.error != 0 ? Fail(reply.error) : Return(reply.result);
}

Verdict FileCalls::LaneRequest(const Target& target) const
{
    if (!IsLaneDevice(target, target.IntArgument(0)))
        return Continue();
    const auto client = target.ReadAs<uint32_t>(target.Argument(2));
    return Outcome(board_.Ask({target.Process(), wire::Op::kLaneReset, client}).error);
}

}  // namespace vboard::seam

#include "virtual_board/seam/filter.h"

#include <linux/audit.h>
#include <linux/seccomp.h>

#include <cerrno>
#include <cstddef>

#include "virtual_board/seam/system_calls.h"

namespace vboard::seam {
namespace {

using Program = std::vector<sock_filter>;

// The third ABI of the processor shares the architecture's number with the first. It has no
// place on the board, and must not be a way past it.
constexpr uint32_t kX32Bit = 0x40000000;
constexpr uint32_t kNoSuchCall = SECCOMP_RET_ERRNO | ENOSYS;

constexpr size_t ArgumentOffset(unsigned argument)
{
    return offsetof(seccomp_data, args) + argument * sizeof(uint64_t);
}

void Load(Program& program, size_t offset)
{
    program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<uint32_t>(offset)));
}

void AddReturn(Program& program, uint32_t action)
{
    program.push_back(BPF_STMT(BPF_RET | BPF_K, action));
}

// Goes on with the next instruction when the condition holds, else skips `length` more.
void Unless(Program& program, uint16_t condition, uint32_t value, size_t length)
{
    program.push_back(BPF_JUMP(static_cast<uint16_t>(BPF_JMP | condition | BPF_K), value, 0,
                               static_cast<uint8_t>(length)));
}

void NotifyIfWithin(Program& program, const ArgumentRange& range)
{
    Load(program, ArgumentOffset(range.argument));
    Unless(program, BPF_JGE, range.first, 2);
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, range.last, 1, 0));
    AddReturn(program, SECCOMP_RET_USER_NOTIF);
}

void ForNumber(Program& program, int number, const Program& body)
{
    Load(program, offsetof(seccomp_data, nr));
    Unless(program, BPF_JEQ, static_cast<uint32_t>(number), body.size());
    program.insert(program.end(), body.begin(), body.end());
}

bool Applies(const CallRule& rule, const FilterOptions& options)
{
    if (rule.reason == Reason::kPrivateNames)
        return options.privateNames;
    return rule.reason != Reason::kScaledTime || options.scaledTime;
}

Program BodyOf(const CallRule& rule)
{
    Program body;
    for (size_t i = 0; i < rule.rangeCount; ++i)
        NotifyIfWithin(body, rule.ranges[i]);
    if (rule.reason == Reason::kForbidden)
        AddReturn(body, kNoSuchCall);
    else
        AddReturn(body, rule.rangeCount == 0 ? SECCOMP_RET_USER_NOTIF : SECCOMP_RET_ALLOW);
    return body;
}

void AddSocketCall(Program& program)
{
    Program body;
    for (uint32_t number : SocketCallNumbers())
        NotifyIfWithin(body, {0, number, number});
    AddReturn(body, SECCOMP_RET_ALLOW);
    ForNumber(program, kSocketCall, body);
}

void AddIpcCall(Program& program)
{
    Program body;
    NotifyIfWithin(body, {0, kIpcSemaphoreGet, kIpcSemaphoreGet});
    AddReturn(body, SECCOMP_RET_ALLOW);
    ForNumber(program, kIpcCall, body);
}

Program BodyOfAbi(int CallRule::*number, const FilterOptions& options)
{
    Program program;
    for (const CallRule& rule : CallRules())
        if (rule.*number != kNoCall && Applies(rule, options))
            ForNumber(program, rule.*number, BodyOf(rule));
    return program;
}

Program BodyOfX86_64(const FilterOptions& options)
{
    Program program;
    Load(program, offsetof(seccomp_data, nr));
    Unless(program, BPF_JGE, kX32Bit, 1);
    AddReturn(program, kNoSuchCall);
    const Program rules = BodyOfAbi(&CallRule::x86_64, options);
    program.insert(program.end(), rules.begin(), rules.end());
    AddReturn(program, SECCOMP_RET_ALLOW);
    return program;
}

Program BodyOfI386(const FilterOptions& options)
{
    Program program = BodyOfAbi(&CallRule::i386, options);
    AddSocketCall(program);
    if (options.privateNames)
        AddIpcCall(program);
    AddReturn(program, SECCOMP_RET_ALLOW);
    return program;
}

// Conditional jumps reach 255 instructions; these bodies may be longer.
void ForArchitecture(Program& program, uint32_t architecture, const Program& body)
{
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, architecture, 1, 0));
    program.push_back(BPF_STMT(BPF_JMP | BPF_JA, static_cast<uint32_t>(body.size())));
    program.insert(program.end(), body.begin(), body.end());
}

}  // namespace

std::vector<sock_filter> BuildFilter(const FilterOptions& options)
{
    Program program;
    Load(program, offsetof(seccomp_data, arch));
    ForArchitecture(program, AUDIT_ARCH_X86_64, BodyOfX86_64(options));
    ForArchitecture(program, AUDIT_ARCH_I386, BodyOfI386(options));
    AddReturn(program, kNoSuchCall);
    return program;
}

}  // namespace vboard::seam

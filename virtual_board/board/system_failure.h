// A system call that failed ends what was asked for, with what was tried and the reason.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace vboard {

[[noreturn]] inline void Fail(const std::string& what, int error = errno)
{
    throw std::system_error(error, std::generic_category(), what);
}

}  // namespace vboard

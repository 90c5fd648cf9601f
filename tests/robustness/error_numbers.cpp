#include "tests/robustness/error_numbers.h"

#include <cerrno>
#include <map>

namespace obtest {

const std::vector<int>& ErrorNumbersOf(const std::string& call)
{
    static const std::map<std::string, std::vector<int>> manual = {
        {"open",
         {EACCES, EBUSY,  EDQUOT,     EEXIST,       EFAULT, EFBIG,   EINTR,     EINVAL, EISDIR,
          ELOOP,  EMFILE, ENFILE,     ENAMETOOLONG, ENODEV, ENOENT,  ENOMEM,    ENOSPC, ENOTDIR,
          ENXIO,  EPERM,  EOPNOTSUPP, EROFS,        EIO,    ETXTBSY, EOVERFLOW, EAGAIN}},
        {"fopen",
         {EACCES, EINTR, EINVAL, EISDIR, EMFILE, ENFILE, ENOENT, ENOMEM, ENXIO, EPERM, EROFS, EIO}},
        {"close", {EBADF, EINTR, EIO, ENOSPC, EDQUOT}},
        {"fwrite", {EAGAIN, EBADF, EFBIG, EINTR, EINVAL, EIO, ENOSPC, EPERM, EPIPE}},
        {"ftok", {EACCES, EBADF, EFAULT, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EOVERFLOW}},
        {"semget", {EACCES, EEXIST, EINVAL, ENOENT, ENOMEM, ENOSPC}},
        {"semop", {E2BIG, EACCES, EAGAIN, EFAULT, EFBIG, EIDRM, EINTR, EINVAL, ENOMEM, ERANGE}},
        {"shm_open", {EACCES, EEXIST, EINVAL, EMFILE, ENAMETOOLONG, ENFILE, ENOENT}},
        {"ftruncate", {EBADF, EFBIG, EINTR, EINVAL, EIO, EPERM, EROFS, ETXTBSY, ENOSPC}},
        {"mmap",
         {EACCES, EAGAIN, EBADF, EEXIST, EINVAL, ENFILE, ENODEV, ENOMEM, EOVERFLOW, EPERM,
          ETXTBSY}},
        {"fstat", {EBADF, EFAULT, ENOMEM, EOVERFLOW}},
        {"fcntl", {EACCES, EAGAIN, EBADF, EINVAL, EMFILE, EPERM}},
        {"socket",
         {EACCES, EAFNOSUPPORT, EINVAL, EMFILE, ENFILE, ENOBUFS, ENOMEM, EPROTONOSUPPORT}},
        {"bind",
         {EACCES, EADDRINUSE, EADDRNOTAVAIL, EBADF, EFAULT, EINVAL, ENOMEM, ENOTSOCK, ENETDOWN}},
        {"send",
         {EACCES, EAGAIN, EBADF, ECONNRESET, EDESTADDRREQ, EFAULT, EINTR, EINVAL, EISCONN, EMSGSIZE,
          ENOBUFS, ENOMEM, ENOTCONN, ENOTSOCK, EOPNOTSUPP, EPIPE, ECONNREFUSED}},
        {"recv", {EAGAIN, EBADF, EFAULT, EINTR, EINVAL, ENOMEM, ENOTCONN, ENOTSOCK, ETIMEDOUT}},
        {"ioctl", {EBADF, EFAULT, EINVAL, ENOTTY, EIO, ENODEV, EOPNOTSUPP, EPERM, EINTR}},
        {"usleep", {EINTR, EINVAL}},
        {"system", {EAGAIN, ENOMEM, ECHILD, EINTR}},
        // Their pages name none: what the loader's own opening, reading, mapping and allocating
        // leaves behind.
        {"dlopen", {0, EACCES, EIO, EMFILE, ENFILE, ENOENT, ENOEXEC, ENOMEM}},
        {"dlsym", {0, ENOMEM}},
    };
    static const std::vector<int> none = {0};
    const auto entry = manual.find(call);
    return entry == manual.end() ? none : entry->second;
}

}  // namespace obtest

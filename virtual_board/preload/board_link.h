// The preloaded library's way to the board process. Only raw system calls: the functions of the C
// library may be taken over by the program, or by this library itself.
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "virtual_board/board/wire.h"

namespace vboard::preload {

struct Buffer {
    void* data = nullptr;
    size_t size = 0;
};

// The board that the environment names, else null.
const char* BoardPath();

// A new connection to the board, or -1 with errno. The descriptor is the caller's.
int Connect();
void Disconnect(int fd);

// One packet each way. Post: false with errno. Await: the reply's result, or -1 with errno. The
// header tells a reply that came from a wait that was cut short: that one leaves it as it is, and
// the reply due.
bool Post(int fd, const wire::Request& request, const void* data);
bool PostText(int fd, const void* text, size_t size);
long Await(int fd, Buffer answer = {}, wire::Reply* header = nullptr, int flags = 0);

// Post and Await, not interrupted.
long Ask(int fd, wire::Op op, uint32_t arg, Buffer data = {}, Buffer answer = {});
long AwaitUninterrupted(int fd, Buffer answer = {}, wire::Reply* header = nullptr);

// Ask on a connection made for this one question.
long AskOnce(wire::Op op, uint32_t arg, Buffer data = {}, Buffer answer = {});

// Number that no other socket of this boot has; 0 when fd is no socket.
unsigned long long SocketCookie(int fd);

}  // namespace vboard::preload

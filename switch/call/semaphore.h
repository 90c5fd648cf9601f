// The one System V semaphore that serialises the switch family across processes.
#pragma once

namespace orblink::sw {

// Opens the existing semaphore.
int _InitGlobalSem();

// Creates it, free; fails while it exists.
int _CreateGlobalSem();

int _ApiGlobalLock();
int _ApiGlobalUnLock();

}  // namespace orblink::sw

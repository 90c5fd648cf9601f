// The one System V semaphore that serialises the switch family across processes.
#pragma once

namespace orblink::sw {

// Opens the existing semaphore.
[[gnu::cold, gnu::noinline]] int _InitGlobalSem(int& semaphoreId);

// Creates it, free; fails while it exists.
[[gnu::cold]] int _CreateGlobalSem(int& semaphoreId);

// A set that is not there any more makes the process forget what it knows of the family.
int _ApiGlobalLock(const int& semaphoreId);
int _ApiGlobalUnLock(const int& semaphoreId);

}  // namespace orblink::sw

/* What the libraries with planted faults share: which fault is asked for, and the private data. */
#pragma once

#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* The environment names the one fault that the library has; without it there is none. */
static inline int Has(const char* fault)
{
    const char* asked = getenv("FAULT");
    return asked && strcmp(asked, fault) == 0;
}

static inline void Crash(void)
{
    /* cppcheck-suppress nullPointer ; it is meant to */
    *(volatile int*)0 = 0;
}

/* Takes a lock of the library; by its name alone, so that nothing is imported. */
static inline void CallApi(const char* function)
{
    unsigned char count = 0;
    int (*call)(unsigned char*) = NULL;
    void* symbol = dlsym(RTLD_DEFAULT, function);
    memcpy(&call, &symbol, sizeof call);
    if (call)
        call(&count);
}

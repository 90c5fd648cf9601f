// A stream that is closed at the end of the scope.
#pragma once

#include <stdio.h>

namespace orblink {

class Stream {
public:
    Stream(const char* path, const char* mode) : file_(fopen(path, mode)) {}
    ~Stream()
    {
        if (file_ != nullptr)
            // cppcheck-suppress doubleFree ; it takes the cast for another call
            static_cast<void>(fclose(file_));  // result dropped: a writer flushes before it decides
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    explicit operator bool() const { return file_ != nullptr; }
    FILE* Get() const { return file_; }

private:
    FILE* file_;
};

}  // namespace orblink

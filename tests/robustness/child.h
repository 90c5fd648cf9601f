// Work done in a process of its own, which may die of it.
#pragma once

#include <functional>
#include <string>

namespace obtest {

struct Ended {
    std::string text;    // what the work had to say; empty when it died
    int signal = 0;      // that it died of
    bool inTime = true;  // false: it had to be killed
};

// How a child ends: at once, or as a program does, so that what measures the library writes its
// findings (which takes its time).
enum class Exit { kAtOnce, kMeasured };

// Runs the work in a child and waits for its end, at most so many milliseconds.
Ended InChild(const std::function<std::string()>& work, int milliseconds = 20000,
              Exit how = Exit::kAtOnce);

// A process whose end is not waited for.
class Background {
public:
    explicit Background(const std::function<void()>& work);
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    // Waits for its end; true when it ended by itself, with exit status 0.
    bool Succeeds(int milliseconds);
    void Kill();
    int Pid() const { return pid_; }

private:
    int pid_ = -1;
};

// Descriptors that this process has open.
int OpenDescriptors();

}  // namespace obtest

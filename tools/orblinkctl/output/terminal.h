// The terminal while a live display has it.
#pragma once

#include <termios.h>

namespace ctl {

// True once the program was asked to end by a signal.
bool EndRequested();
// SIGINT, SIGTERM and SIGHUP ask for the end instead of ending the program.
void CatchEndSignals();

// The same while the object lives.
class CaughtEndSignals {
public:
    CaughtEndSignals() { CatchEndSignals(); }
    ~CaughtEndSignals();
    CaughtEndSignals(const CaughtEndSignals&) = delete;
    CaughtEndSignals& operator=(const CaughtEndSignals&) = delete;
};

// Waits so long for a key, the end or a signal; 0 when there was no key.
char WaitForKey(double seconds);

// Own screen, no echo, keys at once; given back when the object goes.
class LiveScreen {
public:
    LiveScreen();
    ~LiveScreen();
    LiveScreen(const LiveScreen&) = delete;
    LiveScreen& operator=(const LiveScreen&) = delete;

private:
    termios before_ = {};
    bool changed_;
};

}  // namespace ctl

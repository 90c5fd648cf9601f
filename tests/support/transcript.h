// What the library did, as one list of lines in the order in which it happened:
//
//   log1 ORBLINK_SetLanPortVlan:# Invalid Vid=0, DevIdx=0     severity 1, module 21 (switch side)
//   phy1 [ValidateDevIndex] Invalid DevIndex=2                severity 1, module 26, no prefix
//   out HWMB_Start:# Start. Socket type SOCK_SUBJECT          standard output, newline taken off
//   sys semop(0, -1, UNDO)                                    a platform call
//   wait usleep(200000)                                       a wait (which takes no time)
//   hal0 SetLanPortVlan(0, 2, 100)                            a HAL slot; 0 = first library loaded
//
// "#" stands for the source line, after it was checked against the descriptor's.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace obtest {

using Lines = std::vector<std::string>;

class Transcript {
public:
    void Add(std::string line)
    {
        if (quiet)
            return;
        lines_.push_back(std::move(line));
        if (watch)
            watch(lines_.back());
    }

    // Keeps nothing: for what runs long, or in several threads.
    bool quiet = false;

    // Called with each line as it is added, before the call that it stands for is carried out.
    std::function<void(const std::string& line)> watch;

    void AddFormat(std::string format)
    {
        if (!quiet)
            formats_.push_back(std::move(format));
    }
    void Clear()
    {
        lines_.clear();
        formats_.clear();
    }

    const Lines& All() const { return lines_; }

    // The raw format strings that the log sink was given.
    const Lines& Formats() const { return formats_; }

    // The lines that begin with one of the words ("log", "sys", "hal", "out", "wait", "phy").
    Lines Only(std::initializer_list<const char*> words) const;

    // Log lines without trace (severity 9).
    Lines Log() const;

    // True when a line contains the text.
    bool Has(const std::string& text) const;

private:
    Lines lines_;
    Lines formats_;
};

// Printable, one line each, for failure messages.
std::string Joined(const Lines& lines);

}  // namespace obtest

// Runs commands as a user types them, on a virtual board of their own.
#pragma once

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace onboard {

struct Outcome {
    std::string command;
    int code;
    std::string out;
    std::string err;
};

// A directory that goes with the object.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string Path(const std::string& name) const { return path_ + "/" + name; }
    void Write(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;

private:
    std::string path_;
};

// One board, the commands one after the other in a shell each; "ctl" stands for orblinkctl and
// "board" for "orblink-vboard control". A board without a slash is one of virtual_board/boards.
std::vector<Outcome> OnBoard(const std::string& board, const std::vector<std::string>& commands);

// The same with the board initialised and its switches brought up first; their outcomes are left
// out.
std::vector<Outcome> OnBoardUp(const std::string& board, std::vector<std::string> commands);

// Ended with 0 and nothing on standard error.
MATCHER(Succeeds, "succeeds silently")
{
    *result_listener << arg.command << " ended with " << arg.code << ": " << arg.out << arg.err;
    return arg.code == 0 && arg.err.empty();
}

MATCHER_P(Prints, text, "prints exactly the text")
{
    *result_listener << arg.command << " ended with " << arg.code << ":\n" << arg.out << arg.err;
    return arg.code == 0 && arg.err.empty() && arg.out == text;
}

// Ended with the code, nothing on standard output and exactly this complaint.
MATCHER_P2(Refuses, code, complaint, "is refused with the complaint")
{
    *result_listener << arg.command << " ended with " << arg.code << ":\n" << arg.out << arg.err;
    return arg.code == code && arg.out.empty() &&
           arg.err == std::string("orblinkctl: ") + complaint + "\n";
}

// The same after lines of the library's log.
MATCHER_P2(Fails, code, complaint, "fails with the complaint")
{
    *result_listener << arg.command << " ended with " << arg.code << ":\n" << arg.out << arg.err;
    return arg.code == code && arg.out.empty() &&
           arg.err.ends_with(std::string("orblinkctl: ") + complaint + "\n");
}

nlohmann::json Json(const Outcome& outcome);

// A board then gives names of its own to the library's files and semaphores; their owners and modes,
// and what else is in their directories, are those of the machine.
bool NamespacesAreRefused();

// What a command prints for root: an ordinary user is told how many processes are hidden from him.
Outcome AsRootSeesIt(Outcome outcome);

}  // namespace onboard

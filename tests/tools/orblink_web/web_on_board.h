// A board that lives as long as the test, with orblink-web on it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace webtest {

// A directory that goes with the object.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string Path(const std::string& name) const { return path_ + "/" + name; }
    void Write(const std::string& name, const std::string& text) const;
    void Append(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;

private:
    std::string path_;
};

// A program in the background; it goes with the object.
class Background {
public:
    // Its standard output comes through Line().
    Background(std::vector<std::string> words, const std::string& errors);
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    pid_t Id() const { return process_; }
    // The next line of its standard output, without the line's end; empty at the end.
    std::string Line() const;
    // Its exit code, 128 + n for signal n, -1 when it does not end within the time.
    int End(int signal, int milliseconds = 5000);

private:
    pid_t process_ = -1;
    int out_ = -1;
};

struct Outcome {
    int code;
    std::string out;
};

class WebOnBoard {
public:
    // A board without a slash is one of virtual_board/boards.
    explicit WebOnBoard(const std::string& board);

    // A line for the shell, on the board: "orblinkctl up 0".
    Outcome Run(const std::string& line) const;
    // The same in the background.
    std::unique_ptr<Background> Start(const std::string& line) const;
    // A request to the board: "link sw0:1 down".
    void Control(const std::string& words) const;
    // Initialised, everything taken out of reset.
    void BringUp() const;

    // Begins to serve at a port of its own.
    void Serve(const std::string& options = "");
    int Port() const { return port_; }
    Background& Web() { return *web_; }
    // The process that orblink-web is.
    pid_t ProcessId() const;
    const Scratch& Files() const { return scratch_; }

    // Whether the path's body holds the text before the time is over.
    bool Shows(const std::string& path, const std::string& text, int milliseconds = 15000) const;

private:
    std::string Attach() const;

    Scratch scratch_;
    std::unique_ptr<Background> board_;
    std::unique_ptr<Background> web_;
    int port_ = 0;
};

// Whether it comes true before the time is over.
bool Eventually(const std::function<bool()>& condition, int milliseconds = 15000);

std::string Program(const std::string& name);

}  // namespace webtest

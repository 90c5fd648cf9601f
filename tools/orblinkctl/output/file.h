// Where finished texts go.
#pragma once

#include <sys/stat.h>

#include <string>

namespace ctl {

// Writes to standard output at once; fails when it cannot.
void WriteOut(const std::string& text);

// A file that the operator named, on its way. A regular file, or one that is not there yet, gets
// its contents at once and complete, by renaming, and keeps owner and mode; anything else, such as
// a device, a FIFO or the target of a symbolic link, is written straight into and stays what it is.
class OutputFile {
public:
    // Fails, as Keep() and Write() do, with a complaint that names the path.
    explicit OutputFile(std::string path);
    // What was not kept goes, and the file is as before.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    int Descriptor() const { return descriptor_; }
    void Write(const std::string& text);
    void Keep();

private:
    [[noreturn]] void Fail(int error) const;
    void OpenInPlace();
    bool OpenBeside(const struct stat* old);

    std::string path_;
    // Empty when the file is written in place.
    std::string unfinished_;
    int descriptor_ = -1;
};

// The whole of a file; "-" is standard output.
void WriteFile(const std::string& path, const std::string& text);

}  // namespace ctl

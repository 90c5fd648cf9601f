// Hosts of a virtual board that speak through Debian's network tools.
#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace traffic {

using Octets = std::vector<uint8_t>;

inline const std::string kAll = "ffffffffffff";
inline const std::string kFromA = "020000000001";

// Why this machine lets nobody make network namespaces and TAP interfaces; empty when it does.
std::string WhyNot();

// A fresh directory; scripts know it as $S.
class Traffic : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // The hosts are at the kernel's own switch, not at a virtual one. Waits are real ones there, a
    // fifth as long as they say.
    void UseLinux();
    // Runs the script on the board of lan.toml with its switch brought up. It knows:
    //   ctl WORD...           orblinkctl, silently
    //   on HOST COMMAND...    runs a command on a host
    //   $(at HOST) COMMAND... runs it as well, and may do so in the background
    //   send HOST HEX [N]     sends a raw frame from a host
    //   hear HOST, heard HOST begin and end a capture of what arrives at a host
    //   reach HOST ADDRESS    "yes" or "no": whether a ping is answered
    // and prints what it likes; a command that fails ends it.
    std::string Run(const std::string& script);
    // The frames of a capture, oldest first, of the test's own type (0x88B5) or of all types.
    std::vector<Octets> Frames(const std::string& host, bool all = false);
    // How many frames that a host heard the test picks.
    size_t Count(const std::string& host, bool (*picked)(const Octets& frame));
    // In provider mode a frame with this tag leaves a tagging port and the CPU port behind a service
    // tag of VLAN 1, and any other port as it came.
    void ExpectAServiceTagBefore(const std::string& tag);
    nlohmann::json Json(const std::string& file);
    std::string Path(const std::string& file) const { return directory + "/" + file; }

    std::string directory;
    std::string timeScale = "0.05";

private:
    bool onLinux_ = false;
};

// As a script writes them: "ffffffffffff" + source + tags + the test's type and some data.
std::string Frame(const std::string& destination, const std::string& source,
                  const std::string& tags = "", size_t size = 50);
Octets FromHex(const std::string& hex);

}  // namespace traffic

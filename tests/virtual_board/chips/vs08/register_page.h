// The register tables of docs/vswitch-registers.md, read as data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct PageRegister {
    uint16_t address;
    std::string name;
    std::string access;
    std::optional<uint16_t> reset;  // nullopt where the page gives no plain number
    uint16_t bits;                  // those that the content names; all when it names none
};

// Every internal register of a chip whose internal port is 0, in the order of the page.
const std::vector<PageRegister>& RegisterPage();

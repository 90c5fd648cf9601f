// The standard PHY registers of IEEE 802.3, bit by bit.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// A nameless one is none.
struct BitField {
    int high;
    int low;
    const char* name;
};

// Gives an entry of {"registers": [...]} a name and the values of its bits; an unknown register has
// an empty name.
void Describe(Model& entry, const std::string& name, std::span<const BitField> fields);

// Gives each standard PHY register of the model its "bits", by name.
void DecodeRegisters(Model& model, std::optional<unsigned> mmd);

}  // namespace ctl

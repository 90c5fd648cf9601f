// Whom a request means: a page of somebody else's must not reach this server under a name that was
// made to point here.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace web {

// The Host header's text, with or without a port: an address, localhost or one of the names. An
// address cannot be made to point elsewhere.
bool HostIsMeant(std::string_view host, const std::vector<std::string>& names);

}  // namespace web

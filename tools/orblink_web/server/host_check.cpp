#include "tools/orblink_web/server/host_check.h"

#include <arpa/inet.h>
#include <strings.h>

#include <algorithm>

namespace web {

namespace {

bool IsPort(std::string_view text)
{
    return text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool SameName(std::string_view one, std::string_view other)
{
    return one.size() == other.size() && strncasecmp(one.data(), other.data(), one.size()) == 0;
}

bool IsAddress(int family, std::string_view text)
{
    in6_addr parsed = {};
    return inet_pton(family, std::string(text).c_str(), &parsed) == 1;
}

}  // namespace

bool HostIsMeant(std::string_view host, const std::vector<std::string>& names)
{
    const bool bracketed = host.starts_with('[');
    const size_t end = bracketed ? host.find(']') : host.find(':');
    if (bracketed && end == std::string_view::npos)
        return false;
    std::string_view name = host.substr(bracketed ? 1 : 0, end - (bracketed ? 1 : 0));
    const std::string_view rest =
        end == std::string_view::npos ? "" : host.substr(end + (bracketed ? 1 : 0));
    if (!rest.empty() && (rest.front() != ':' || !IsPort(rest.substr(1))))
        return false;
    if (bracketed)
        return IsAddress(AF_INET6, name);
    return IsAddress(AF_INET, name) || SameName(name, "localhost") ||
           std::any_of(names.begin(), names.end(),
                       [&](const std::string& allowed) { return SameName(name, allowed); });
}

}  // namespace web

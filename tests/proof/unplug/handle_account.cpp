// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/handle_account.h"

#include <map>
#include <sstream>

HandleAccount AccountOf(const std::vector<std::string>& journal) {
    HandleAccount account;
    std::map<std::string, std::string> open; // names of the ports by handle
    for (const std::string& line : journal) {
        std::istringstream words(line);
        std::string call;
        std::string first;
        std::string arrow;
        std::string handle;
        words >> call >> first >> arrow >> handle;
        const bool hasFailed = line.find(" = ") != std::string::npos;
        if (hasFailed || (call == "Close" && open.erase(first) == 0)) {
            account.wrong.push_back(line);
        } else if (call == "Open" && !open.emplace(handle, first).second) {
            account.wrong.push_back(line);
        }
    }
    for (const auto& [handle, port] : open) {
        account.left.push_back(port);
    }
    return account;
}

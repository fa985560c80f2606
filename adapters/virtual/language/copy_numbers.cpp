// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/copy_numbers.h"

namespace {

void PutIn(std::string& name, const std::string& place, const std::optional<size_t>& number) {
    const std::string text = number ? std::to_string(*number) : place;
    for (size_t at = 0; (at = name.find(place, at)) != std::string::npos; at += text.size()) {
        name.replace(at, place.size(), text);
    }
}

} // namespace

std::string NameOfCopy(std::string name, const CopyNumbers& numbers) {
    PutIn(name, "{n}", numbers.device);
    PutIn(name, "{p}", numbers.port);
    return name;
}

// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/cell.h"

#include <array>
#include <ostream>

namespace {

constexpr std::array<const char*, 10> kOperations{
    "Open",       "Write",         "Receive",         "Close",     "Register",
    "UnRegister", "RegisterState", "UnRegisterState", "Enumerate", "Release"};
constexpr std::array<const char*, 5> kMoments{"Before", "UnderWayAt", "DuringTheRescanOf",
                                              "DuringTheCallbackOf", "After"};
constexpr std::array<const char*, 2> kGone{"ADevice", "APort"};

template <typename Names, typename Value> std::string Text(const Names& names, Value value) {
    return names.at(static_cast<std::size_t>(value));
}

} // namespace

std::string NameOf(const Cell& cell) {
    return Text(kOperations, cell.operation) + Text(kMoments, cell.moment) + "ThePullOutOf" +
           Text(kGone, cell.gone);
}

std::ostream& operator<<(std::ostream& out, const Cell& cell) { return out << NameOf(cell); }

std::vector<Cell> CellsAt(const std::vector<Moment>& moments) {
    std::vector<Cell> cells;
    for (std::size_t operation = 0; operation < kOperations.size(); ++operation) {
        for (const Moment moment : moments) {
            for (const Gone gone : {Gone::kDevice, Gone::kPort}) {
                cells.push_back({static_cast<Operation>(operation), moment, gone});
            }
        }
    }
    return cells;
}

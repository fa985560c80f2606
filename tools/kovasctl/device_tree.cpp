// SPDX-License-Identifier: MIT
#include "tools/kovasctl/device_tree.h"

#include <algorithm>

#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"

namespace {

struct Columns {
    size_t name = 0;
    size_t id = 0;
};

Columns Measure(const Snapshot& snapshot) {
    Columns columns;
    for (const Device& device : snapshot.devices) {
        columns.name = std::max(columns.name, ColumnsOf(Printable(device.name)));
        for (const Port& port : device.ports) {
            columns.id = std::max(columns.id, std::to_string(port.id).size());
        }
    }
    return columns;
}

std::string Branch(bool isLast) {
    if (IsUtf8Terminal()) {
        return isLast ? "└─ " : "├─ ";
    }
    return isLast ? "`- " : "|- ";
}

std::string PortLine(const Port& port, bool isLast, const Columns& columns) {
    const std::string id = std::to_string(port.id);
    return Painted(Colour::Dim, Branch(isLast)) + std::string(columns.id - id.size(), ' ') +
           Painted(Colour::Cyan, id) + "  " + Printable(port.name) + "\n";
}

std::string DeviceLine(const Device& device, const Columns& columns) {
    const std::string name = Printable(device.name);
    const std::string text = Printable(device.text);
    const std::string gap(text.empty() ? 0 : columns.name - ColumnsOf(name) + 2, ' ');
    return Painted(Colour::Bold, name) + gap + text + "\n";
}

} // namespace

std::string DeviceTree(const Snapshot& snapshot) {
    const Columns columns = Measure(snapshot);
    std::string tree;
    for (const Device& device : snapshot.devices) {
        tree += DeviceLine(device, columns);
        for (const Port& port : device.ports) {
            tree += PortLine(port, &port == &device.ports.back(), columns);
        }
    }
    return tree;
}

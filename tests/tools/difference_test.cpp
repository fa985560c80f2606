// SPDX-License-Identifier: MIT
#include "tools/kovasctl/difference.h"

#include <gtest/gtest.h>

namespace {

using Kind = Change::Kind;

Snapshot Of(const std::vector<Device>& devices) {
    return {devices, static_cast<uint32_t>(devices.size())};
}

std::vector<Kind> KindsOf(const std::vector<Change>& changes) {
    std::vector<Kind> kinds;
    for (const Change& change : changes) {
        kinds.push_back(change.kind);
    }
    return kinds;
}

const Device kModem{"modem", "", {{1, "modem-0", 0}, {2, "modem-1", 0}}};
const Device kSensor{"sensor", "", {{3, "sensor-0", 0}}};

TEST(SnapshotDifference, OfEqualOnesIsNothing) {
    EXPECT_TRUE(Difference(Of({kModem, kSensor}), Of({kSensor, kModem})).empty());
}

TEST(SnapshotDifference, TellsWhatWentBeforeWhatCame) {
    const auto changes = Difference(Of({kModem}), Of({kSensor}));
    EXPECT_EQ((std::vector<Kind>{Kind::DeviceRemoved, Kind::DeviceAdded}), KindsOf(changes));
}

TEST(SnapshotDifference, OfADeviceThatCameBackIsBothHalves) {
    const Device again{"sensor", "", {{9, "sensor-0", 0}}};
    const auto changes = Difference(Of({kSensor}), Of({again}));
    EXPECT_EQ((std::vector<Kind>{Kind::DeviceRemoved, Kind::DeviceAdded}), KindsOf(changes));
}

TEST(SnapshotDifference, OfOnePortNamesThatPortAlone) {
    const Device changed{"modem", "", {{1, "modem-0", 0}, {5, "modem-update", 0}}};
    const auto changes = Difference(Of({kModem}), Of({changed}));
    ASSERT_EQ((std::vector<Kind>{Kind::PortRemoved, Kind::PortAdded}), KindsOf(changes));
    ASSERT_EQ(1U, changes[1].device.ports.size());
    EXPECT_EQ("modem-update", changes[1].device.ports[0].name);
}

} // namespace

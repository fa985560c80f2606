// SPDX-License-Identifier: MIT
#include <memory>

#include "tests/bindings/binding_host.h"

using kovasmgr::Changes;
using kovasmgr::Device;
using kovasmgr::Difference;
using kovasmgr::Snapshot;

namespace {

const Device kModem{"modem", "a text", {{1, "m0"}, {2, "m1"}}};
const Device kSensor{"sensor", "", {{3, "s0"}}};

Snapshot Of(const std::vector<Device>& devices) { return {devices, devices.size()}; }

} // namespace

TEST(Difference, OfTheSameIsEmpty) {
    EXPECT_TRUE(Difference(Of({}), Of({})).Empty());
    EXPECT_TRUE(Difference(Of({kModem, kSensor}), Of({kSensor, kModem})).Empty());
}

TEST(Difference, ShowsADeviceThatCameWhole) {
    const Changes changes = Difference(Of({kSensor}), Of({kSensor, kModem}));
    EXPECT_EQ(NamesOf(changes.came), Names{"modem(m0 m1)"});
    EXPECT_EQ("a text", changes.came[0].text);
    EXPECT_EQ(2, changes.came[0].ports[1].id);
    EXPECT_TRUE(changes.went.empty() && changes.portsCame.empty() && changes.portsWent.empty());
}

TEST(Difference, ShowsADeviceThatWentAsItWas) {
    const Changes changes = Difference(Of({kSensor, kModem}), Of({kSensor}));
    EXPECT_EQ(NamesOf(changes.went), Names{"modem(m0 m1)"});
    EXPECT_TRUE(changes.came.empty() && changes.portsCame.empty() && changes.portsWent.empty());
}

TEST(Difference, ShowsThePortsOfADeviceThatStays) {
    const Device oneLess{"modem", "a text", {{1, "m0"}}};
    EXPECT_EQ(NamesOf(Difference(Of({kModem}), Of({oneLess})).portsWent), Names{"modem(m1)"});
    EXPECT_EQ(NamesOf(Difference(Of({oneLess}), Of({kModem})).portsCame), Names{"modem(m1)"});
    EXPECT_TRUE(Difference(Of({kModem}), Of({oneLess})).went.empty());
}

TEST(Difference, ShowsADeviceThatWasAwayTwice) {
    const Device again{"modem", "a text", {{7, "m0"}, {8, "m1"}}};
    const Changes changes = Difference(Of({kModem}), Of({again}));
    EXPECT_EQ(1, changes.went.at(0).ports.at(0).id);
    EXPECT_EQ(7, changes.came.at(0).ports.at(0).id);
    EXPECT_TRUE(changes.portsCame.empty() && changes.portsWent.empty());
}

TEST(Difference, ShowsAPortThatWasAwayTwice) {
    const Device again{"modem", "a text", {{1, "m0"}, {9, "m1"}}};
    const Changes changes = Difference(Of({kModem}), Of({again}));
    EXPECT_EQ(2, changes.portsWent.at(0).ports.at(0).id);
    EXPECT_EQ(9, changes.portsCame.at(0).ports.at(0).id);
}

TEST(Snapshot, OfMoreDevicesThanEntriesShowsTheEntriesAndCountsAll) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    list->nDeviceCount = 70;
    const Snapshot snapshot = kovasmgr::detail::SnapshotOf(*list);
    EXPECT_EQ(70U, snapshot.present);
    EXPECT_EQ(static_cast<size_t>(KOVAMGR_MAX_DEVICES), snapshot.devices.size());
}

TEST(Snapshot, FindsByName) {
    const Snapshot snapshot = Of({kModem, kSensor});
    EXPECT_EQ(3, snapshot.FindPort("s0")->id);
    EXPECT_EQ("a text", snapshot.FindDevice("modem")->text);
    EXPECT_FALSE(snapshot.FindPort("modem"));
    EXPECT_FALSE(snapshot.FindDevice("s0"));
}

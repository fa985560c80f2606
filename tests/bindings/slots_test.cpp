// SPDX-License-Identifier: MIT
#include <map>
#include <sstream>

#include "tests/bindings/binding_host.h"

using kovasmgr::ByteView;
using kovasmgr::Errc;
using kovasmgr::kMaxOpenPorts;
using kovasmgr::Library;
using kovasmgr::Port;

namespace {

constexpr size_t kPorts = kMaxOpenPorts + 6; // in devices of ten ports that send back

std::string Name(size_t port) { return "p" + std::to_string(port); }

class CppSlots : public BindingHost {
  protected:
    CppSlots() {
        std::ostringstream scenario;
        for (size_t i = 0; i < kPorts; ++i) {
            if (i % 10 == 0) {
                scenario << "[[device]]\nname = \"d" << i / 10 << "\"\n";
            }
            scenario << "[[device.port]]\nname = \"" << Name(i) << "\"\nfar = \"echo\"\n";
        }
        UseScenario(scenario.str());
        m_Library = Init();
    }

    Port OpenOne(size_t index) { return Open(m_Library, Name(index), m_Inbox[index].Receiver()); }

    std::vector<Port> OpenAll() {
        std::vector<Port> ports;
        for (size_t i = 0; i < kMaxOpenPorts; ++i) {
            ports.push_back(OpenOne(i));
        }
        return ports;
    }

    std::map<size_t, Inbox> m_Inbox;
    Library m_Library;
};

} // namespace

TEST_F(CppSlots, GiveEachPortItsOwnData) {
    const std::vector<Port> ports = OpenAll();
    for (size_t i = 0; i < ports.size(); ++i) {
        ASSERT_TRUE(ports[i].Write(Name(i) + ";").Whole());
    }
    for (size_t i = 0; i < ports.size(); ++i) {
        EXPECT_TRUE(m_Inbox[i].WaitFor(Name(i) + ";"));
        EXPECT_EQ(Name(i) + ";", m_Inbox[i].Text());
    }
}

TEST_F(CppSlots, RefuseOnePortMoreAndTakeItWhenOneIsClosed) {
    std::vector<Port> ports = OpenAll();
    EXPECT_EQ(Errc::TooManyPorts, ErrorOf([&] { OpenOne(kMaxOpenPorts); }));
    EXPECT_EQ(Errc::TooManyPorts, ErrorOf([&] { Open(m_Library, Name(kMaxOpenPorts)); }));
    ports[7] = Port();
    const Port more = OpenOne(kMaxOpenPorts);
    EXPECT_TRUE(more.Write("more").Whole());
    EXPECT_TRUE(m_Inbox[kMaxOpenPorts].WaitFor("more"));
    EXPECT_TRUE(ports[8].Write("still").Whole());
    EXPECT_TRUE(m_Inbox[8].WaitFor("still"));
}

TEST_F(CppSlots, AreNotLostByOpeningsThatFail) {
    for (size_t i = 0; i < 2 * kMaxOpenPorts; ++i) {
        EXPECT_EQ(Errc::BadArgument, ErrorOf([&] { m_Library.Open(99999, [](ByteView) {}); }));
    }
    EXPECT_EQ(kMaxOpenPorts, OpenAll().size());
}

TEST_F(CppSlots, AreFreedByPortsThatOutliveTheLibrary) {
    std::vector<Port> ports = OpenAll();
    m_Library = Library();
    ports.clear();
    m_Library = Init();
    EXPECT_EQ(kMaxOpenPorts, OpenAll().size());
}

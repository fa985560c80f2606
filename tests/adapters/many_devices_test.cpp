// SPDX-License-Identifier: MIT
//
// More devices and ports than the list of the interface has room for.
#include <string>

#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/simulated_host.h"
#include "tests/harness/wait_until.h"

namespace {

class ManyDevices : public SimulatedHost {
  protected:
    static std::string Units(int first, int last, const std::string& ports = "") {
        std::string text;
        for (int i = first; i <= last; ++i) {
            const std::string name = "u" + std::to_string(i);
            text +=
                (i == first ? "" : " ") + name + "(" + (ports.empty() ? name + "p" : ports) + ")";
        }
        return text;
    }

    static constexpr const char* kSeventy = R"(
[[device]]
name = "u{n}"
count = 70
[[device.port]]
name = "u{n}p"
)";
};

} // namespace

TEST_F(ManyDevices, TheFirst64AreListedAndOneLineSaysWhatIsLeftOut) {
    Run("", kSeventy);
    EXPECT_EQ(Units(1, 64), m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("replug u70"));
    EXPECT_EQ(1, LogLines("the list has room for 64 devices of 16 ports; 6 of the scenario's are "
                          "left out"));
    EXPECT_GT(Open("u70p"), 0);
}

TEST_F(ManyDevices, WhoIsListedKeepsItsPlaceAndAFreeOneIsTakenByTheNext) {
    Run("", kSeventy);
    NoticeRecorder recorder(m_Adapter);
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("ok", Command("replug u3"));
    EXPECT_EQ(Units(1, 64), m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("pull u3"));
    const std::string without = Units(1, 2) + " " + Units(4, 64);
    EXPECT_EQ(without + " u65(u65p)", m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("plug u3"));
    EXPECT_EQ(without + " u65(u65p)", m_Adapter.DevicesText());
    // A notice of removals shows nobody new.
    EXPECT_EQ((std::vector<std::string>{"- " + without, "+ " + Units(1, 64), "- " + without,
                                        "+ " + without + " u65(u65p)"}),
              recorder.Notices());
    End();
}

TEST_F(ManyDevices, TheFirst16PortsOfADeviceAreListed) {
    Run("", R"(
[[device]]
name = "d"
[[device.port]]
name = "p{p}"
count = 20
)");
    const std::string before = "d(p1 p2 p3 p4 p5 p6 p7 p8 p9 p10 p11 p12 p13 p14 p15 p16)";
    EXPECT_EQ(before, m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("unplug-port p2"));
    EXPECT_EQ("d(p1 p3 p4 p5 p6 p7 p8 p9 p10 p11 p12 p13 p14 p15 p16 p17)",
              m_Adapter.DevicesText());
    EXPECT_EQ(1, LogLines("4 of the scenario's are left out"));
}

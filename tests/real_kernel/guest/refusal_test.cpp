// SPDX-License-Identifier: MIT
// Ports that do not open, and what the log says about it.
#include <filesystem>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/real_kernel/guest/user.h"

namespace {

class Refusal : public GuestHost {
  protected:
    void SetUp() override {
        m_Modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
        Start();
        m_Port = WaitFor("Modem A1").ports.at(0);
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    }

    /// Expects that the port does not open and that the log says these words.
    void ExpectRefused(const std::vector<std::string>& words) {
        Start();
        const Port port = WaitFor("Modem A1").ports.at(0);
        EXPECT_EQ(KOVAMGR_ERR_OSADAPT, KOVAMGR_Open(port.id));
        const std::string log = LogText();
        for (const std::string& word : words) {
            EXPECT_NE(std::string::npos, log.find(word)) << "no \"" << word << "\" in\n" << log;
        }
    }

    Gadget m_Modem{0};
    Port m_Port;
};

} // namespace

TEST_F(Refusal, AUserOutsideTheGroupIsToldTheGroup) {
    const OrdinaryUser user({});
    ExpectRefused({m_Port.name, "ermission", "dialout"});
    KOVAMGR_Release();
}

TEST_F(Refusal, AMemberOfTheGroupIsServedAtOnceWhenADeviceComes) {
    m_Modem.PullOut();
    Ask("plug 1 B1");
    Ask("pull 1");
    const OrdinaryUser user({kDialout});
    Start();
    int opened = 0;
    notices::OnEach([&] {
        if (const auto device = Find("C1")) {
            opened = KOVAMGR_Open(device->ports.at(0).id);
        }
    });
    notices::Clear();
    Ask("plug 1 C1");
    EXPECT_TRUE(notices::WaitForSigns("+")) << notices::Signs();
    EXPECT_EQ(KOVAMGR_OK, opened) << LogText();
    Ask("pull 1");
    EXPECT_TRUE(WaitUntilGone("C1"));
    KOVAMGR_Release();
}

TEST_F(Refusal, APortThatAnotherProcessHoldsIsBusyByName) {
    const Holder holder(m_Port.name);
    ExpectRefused({m_Port.name, "holder", std::to_string(holder.Process())});
}

// Whose process it is can then not be seen.
TEST_F(Refusal, APortThatAnotherUsersProcessHoldsIsBusy) {
    const Holder holder(m_Port.name);
    const OrdinaryUser user({kDialout});
    ExpectRefused({m_Port.name, "in use"});
    KOVAMGR_Release();
}

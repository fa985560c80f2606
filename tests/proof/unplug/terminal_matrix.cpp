// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/terminal_matrix.h"

#include <algorithm>
#include <filesystem>

#include "KOVASMgr.h"
#include "tests/harness/wait_until.h"
#include "tests/proof/callbacks/seed.h"
#include "tests/proof/unplug/bounded_thread.h"
#include "tests/proof/unplug/host_operation.h"
#include "tests/proof/unplug/terminal_callbacks.h"

namespace {

using Time = StartLine::Time;

constexpr Time kMillisecond{1000};

const PortsOfDevices kAllDevices{{"mine", {"mine-0"}}, {"other", {"other-0", "other-1"}}};

} // namespace

TerminalMatrix::TerminalMatrix() : m_Random(Seed()) {
    std::filesystem::create_symlink(KOVASMGR_VIRTUAL_ADAPTER, "libOSAdapt.so");
    UseScenario("[[device]]\nname = \"mine\"\n[[device.port]]\nname = \"mine-0\"\n"
                "[[device]]\nname = \"other\"\n[[device.port]]\nname = \"other-0\"\n"
                "[[device.port]]\nname = \"other-1\"\n");
}

TerminalMatrix::~TerminalMatrix() { KOVAMGR_Release(); }

void TerminalMatrix::Start() {
    ASSERT_EQ(KOVAMGR_Init(m_Scratch.LogDirectory().c_str()), KOVAMGR_OK);
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnNotice), KOVAMGR_OK);
    m_Mine = IdOf("mine-0");
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnNeighbourData, m_Mine), KOVAMGR_OK);
    ASSERT_EQ(KOVAMGR_Open(m_Mine), KOVAMGR_OK);
    m_MineFar = std::make_unique<FarProgram>(PortLink("mine-0"));
    m_Client = std::make_unique<ControlClient>(ControlDirectory());
}

void TerminalMatrix::Disconnect() {
    m_Far.reset();
    m_MineFar.reset();
    m_Client.reset();
}

void TerminalMatrix::Use() {
    m_Other = IdOf("other-0");
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnData, m_Other), KOVAMGR_OK);
    if (m_Cell.operation != Operation::kOpen) {
        ASSERT_EQ(KOVAMGR_Open(m_Other), KOVAMGR_OK);
    }
    if (m_Cell.operation == Operation::kUnRegisterState) {
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnSecondNotice), KOVAMGR_OK);
    }
    KOVAMGR_Open(IdOf("other-1")); // is open already when other-0 alone had gone
    m_Far = std::make_unique<FarProgram>(PortLink("other-0"));
}

void TerminalMatrix::Collide() {
    m_PullOutsBefore = TerminalNotices::Get().pullOuts;
    if (m_Cell.moment == Moment::kAfter) {
        PullOut();
        StartLine::Pass(Random(Time(0), kMillisecond));
        BoundedThread("the operation", [this] { Operate(); }).Join();
        return;
    }
    if (m_Cell.operation == Operation::kReceive) {
        CollideWithDelivery();
        return;
    }
    StartLine line(2);
    const Time hostDelay = HostDelay();
    const Time pullDelay = m_Cell.moment == Moment::kBefore
                               ? hostDelay + Random(Time(0), kMillisecond)
                               : Random(Time(0), kMillisecond);
    BoundedThread host("the operation", [&] {
        line.Leave(hostDelay);
        Operate();
    });
    line.Leave(pullDelay);
    PullOut();
}

// The read thread has a rhythm of its own: here its callback is the start. In the middle of a
// pull-out it is the notice that waits for the callback.
void TerminalMatrix::CollideWithDelivery() {
    TerminalNotices& notices = TerminalNotices::Get();
    const int before = notices.deliveries;
    const Time lasting = m_Cell.moment == Moment::kBefore ? Time(0) : HostDelay();
    notices.lasting = static_cast<int>(lasting.count());
    Operate();
    EXPECT_TRUE(WaitUntil([&] { return notices.deliveries > before; }));
    StartLine::Pass(Random(Time(0), kMillisecond));
    PullOut();
}

// From the common start on.
Time TerminalMatrix::HostDelay() {
    if (m_Cell.moment != Moment::kDuringRescan) {
        return Random(Time(0), kMillisecond);
    }
    return Random(m_PullTime - kMillisecond, m_PullTime + kMillisecond);
}

Time TerminalMatrix::Random(Time from, Time to) {
    return Time(std::uniform_int_distribution<Time::rep>(from.count(), to.count())(m_Random));
}

void TerminalMatrix::PullOut() {
    const auto start = std::chrono::steady_clock::now();
    m_Reply = m_Client->Ask(CommandFor("pull other", "unplug-port other-0"));
    const auto taken = std::chrono::steady_clock::now() - start;
    // Slower than usual is the machine, and says nothing of the next time.
    m_PullTime =
        std::clamp(std::chrono::duration_cast<Time>(taken), kMillisecond, 20 * kMillisecond);
}

void TerminalMatrix::PlugIn() {
    ASSERT_EQ(m_Client->Ask(CommandFor("plug other", "plug-port other-0")), "ok");
}

std::string TerminalMatrix::CommandFor(const char* device, const char* port) const {
    return m_Cell.gone == Gone::kDevice ? device : port;
}

void TerminalMatrix::Operate() {
    if (m_Cell.operation == Operation::kReceive) {
        m_Far->Send("data");
    } else if (m_Cell.operation == Operation::kEnumerate) {
        m_Result = Enumerate(m_Devices);
    } else {
        m_Result = Perform(m_Cell.operation, {m_Other, OnData, OnSecondData, OnSecondNotice});
    }
    m_WasTold = TerminalNotices::Get().pullOuts > m_PullOutsBefore;
}

// A port that is gone from the system and not yet from the library's list fails in the adapter.
bool TerminalMatrix::EndedWell() const {
    const bool isKnown = m_Cell.moment != Moment::kAfter;
    switch (m_Cell.operation) {
    case Operation::kOpen:
        return m_Result == KOVAMGR_ERR_PARAM ||
               (isKnown && (m_Result == KOVAMGR_OK || m_Result == KOVAMGR_ERR_OSADAPT));
    case Operation::kWrite:
        return m_Result == -1 || (isKnown && m_Result == 5);
    case Operation::kRegister:
    case Operation::kUnRegister:
        return m_Result == KOVAMGR_ERR_PARAM || (isKnown && m_Result == KOVAMGR_OK);
    case Operation::kReceive:
        return true;
    case Operation::kEnumerate:
        return m_Result == KOVAMGR_OK &&
               (m_Devices == DevicesWithout() || (isKnown && m_Devices == kAllDevices));
    default:
        return m_Result == KOVAMGR_OK;
    }
}

bool TerminalMatrix::CameFirst() const {
    switch (m_Cell.operation) {
    case Operation::kOpen:
    case Operation::kRegister:
    case Operation::kUnRegister:
        return m_Result == KOVAMGR_OK;
    case Operation::kWrite:
        return m_Result == 5;
    case Operation::kEnumerate:
        return m_Devices == kAllDevices;
    default:
        return !m_WasTold;
    }
}

PortsOfDevices TerminalMatrix::DevicesWithout() const {
    PortsOfDevices devices = kAllDevices;
    if (m_Cell.gone == Gone::kDevice) {
        devices.erase("other");
    } else {
        devices["other"].erase("other-0");
    }
    return devices;
}

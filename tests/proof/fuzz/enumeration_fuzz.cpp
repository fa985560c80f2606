// SPDX-License-Identifier: MIT
//
// Anything that an adapter may put into the enumeration record, read by the scans for arrivals and
// for removals and told to the host. The rules are in container_rules.h.
//
// Input: the record to begin with (Byte), then steps: what to do (Byte) and with what. Most steps
// change the record, the others let the manager look at it.
#include <cstring>
#include <memory>

#include "api/state.h"
#include "tests/harness/manager_probe.h"
#include "tests/proof/fuzz/container_rules.h"
#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/fuzz/listed_adapter.h"

namespace {

constexpr int kMostSteps = 200;
constexpr int kMostScans = 12;
constexpr size_t kMostPorts = 1500; // a scan's time grows with the square
constexpr size_t kNames = 6;

int s_Notices = 0;

void CountNotice(_KOVAMGR_DEV_STATE_TYPE_) { ++s_Notices; }

// A text that fills its array has no terminator, one that is shorter may have none either.
template <size_t size> void PutText(char (&text)[size], FuzzInput& input) {
    const uint8_t kind = input.Byte();
    if (kind < kNames) {
        std::snprintf(text, size, "%s %d", size == OS_ADAPT_PORT_NAME_SIZE ? "COM" : "Device",
                      kind);
    } else if (kind == kNames) {
        std::memset(text, 'x', size);
    } else if (kind == kNames + 1) {
        std::memset(text, 'x', size - 1); // the last byte stays
    } else if (kind == kNames + 2) {
        std::snprintf(text, size, "%%n%%s%%%%%%1000000d%%");
    } else {
        const std::string bytes = input.Text(std::min<size_t>(kind - kNames - 3, size));
        bytes.copy(text, size);
        if (bytes.size() < size && kind % 2 == 1) {
            text[bytes.size()] = '\0';
        }
    }
}

/// One run of the manager with the adapter whose record the input writes.
class Run {
  public:
    explicit Run(FuzzInput& input) : m_Input(input), m_Manager(*CKOVASMgrPort::GetInstance()) {
        ListedAdapter::Bind();
        g_pMgrPort = &m_Manager;
        ManagerProbe::OSAdaptLib(m_Manager) = new JLibrary("/nowhere/OSAdapt"); // the manager's own
        ManagerProbe::IsInit(m_Manager) = 1;
        m_Manager.RegisterDeviceStateProcessCallback(CountNotice);
    }
    ~Run() {
        CKOVASMgrPort::ReleaseInstance();
        g_pMgrPort = nullptr;
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void Steps() {
        Begin();
        for (int step = 0; step < kMostSteps && !m_Input.IsAtEnd(); ++step) {
            Step(m_Input.Byte() % 20);
        }
        Scan(OS_ADAPT_DEVICE_INSERT);
        Scan(OS_ADAPT_DEVICE_PULLOUT);
    }

  private:
    void Begin() {
        switch (m_Input.Byte() % 8) {
        case 0:
            return;
        case 1:
            return ListedAdapter::Fill(OS_ADAPT_MAX_DEVICES, 1);
        case 2:
            return ListedAdapter::Fill(4, OS_ADAPT_MAX_PORTS);
        default:
            return ListedAdapter::Fill(3, 2);
        }
    }

    void Step(int what) {
        switch (what) {
        case 0:
            return PutSmall(List().nDeviceCount);
        case 1:
            return PutAny(List().nDeviceCount);
        case 2:
            return PutSmall(Device().nPortCount);
        case 3:
            return PutAny(Device().nPortCount);
        case 4:
            return PutText(Device().szDeviceName, m_Input);
        case 5:
            return PutText(Device().szDeviceText, m_Input);
        case 6:
            return PutText(Port().szPortName, m_Input);
        case 7:
            return PutSmall(Port().nPortID);
        case 8:
            return PutAny(Port().nPortID);
        case 9:
            return CopyDevice();
        case 10:
            return PatchAnywhere();
        case 11:
            return ListedAdapter::SetMood(static_cast<ListedAdapter::Mood>(m_Input.Byte() % 3));
        case 12:
        case 13:
            return Scan(OS_ADAPT_DEVICE_INSERT);
        case 14:
        case 15:
            return Scan(OS_ADAPT_DEVICE_PULLOUT);
        case 16:
            return Scan(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(m_Input.Number()));
        case 17:
            KOVAMGR_Open(AnyNumber());
            return;
        case 18:
            KOVAMGR_Close(AnyNumber());
            return;
        default:
            return OpenAll();
        }
    }

    static _OS_ADAPT_DEVICEPORTLIST& List() { return ListedAdapter::List(); }
    _OS_ADAPT_DEVICEPORTINFO& Device() {
        return List().stDevice[m_Input.Byte() % OS_ADAPT_MAX_DEVICES];
    }
    _OS_ADAPT_PORTINFO& Port() {
        _OS_ADAPT_DEVICEPORTINFO& device = Device();
        return device.stPort[m_Input.Byte() % OS_ADAPT_MAX_PORTS];
    }

    void PutSmall(int32_t& field) { field = static_cast<int8_t>(m_Input.Byte()); }
    void PutAny(int32_t& field) { field = m_Input.Number(); }

    void CopyDevice() {
        const _OS_ADAPT_DEVICEPORTINFO from = Device();
        Device() = from;
    }

    void PatchAnywhere() {
        const size_t at = static_cast<uint32_t>(m_Input.Number()) % sizeof List();
        const std::string bytes =
            m_Input.Text(std::min<size_t>(m_Input.Byte(), sizeof List() - at));
        bytes.copy(reinterpret_cast<char*>(&List()) + at, bytes.size());
    }

    int AnyNumber() {
        const uint8_t which = m_Input.Byte();
        return which < Prepared().size() ? Prepared()[which].nPortID : which;
    }

    void OpenAll() {
        for (const _PORT_& port : Ports(Prepared())) {
            KOVAMGR_Open(port.nPortID);
        }
        CheckAll();
    }

    const Ports& Prepared() const { return ManagerProbe::PreparedPorts(m_Manager); }

    void Scan(_OS_ADAPT_DEVICESTATUS_TYPE status) {
        if (m_Scans == kMostScans || Prepared().size() > kMostPorts) {
            return;
        }
        ++m_Scans;
        s_Notices = 0;
        const Ports before = Prepared();
        Demand(CKOVASMgrPort::ProcessDeviceState(status) == 0, "a notification is taken");
        Demand(s_Notices == 1, "each notification is told once");
        CheckScan(status, before);
        CheckAll();
    }

    void CheckScan(_OS_ADAPT_DEVICESTATUS_TYPE status, const Ports& before) {
        if (!ListedAdapter::Enumerates()) {
            CheckUnchanged(before, Prepared());
        } else if (status == OS_ADAPT_DEVICE_INSERT) {
            CheckArrival(before, Prepared(), List());
        } else if (status == OS_ADAPT_DEVICE_PULLOUT) {
            CheckRemoval(before, Prepared());
        } else {
            CheckUnchanged(before, Prepared());
        }
    }

    void CheckAll() {
        const Devices& devices = ManagerProbe::DeviceTree(m_Manager);
        m_AreNumbersUnique = m_AreNumbersUnique && HasUniqueNumbers(Prepared());
        CheckPorts(Prepared());
        CheckTree(devices, Prepared(), m_AreNumbersUnique);
        static const auto s_Told = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
        std::memset(s_Told.get(), 0xaa, sizeof *s_Told);
        Demand(KOVAMGR_EnumeratePortInfo(s_Told.get()) == KOVAMGR_OK, "a host can enumerate");
        CheckList(*s_Told, devices);
    }

    FuzzInput& m_Input;
    CKOVASMgrPort& m_Manager;
    int m_Scans = 0;
    bool m_AreNumbersUnique = true;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The scans print there.
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    Run(input).Steps();
    return 0;
}

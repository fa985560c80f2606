// SPDX-License-Identifier: MIT
//
// A session on the virtual adapter's built-in devices, from listing to unplugging, each step
// observed:
//
//     live_session COMMAND      COMMAND: the path of kovasmgr-virtual, which plugs and pulls
//
// scripts/demo runs it.
#include <KOVASMgr.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include <unistd.h>

namespace {

// What the callbacks have brought so far. They run on other threads than main.
class Inbox {
  public:
    void Append(const char* data, size_t length) {
        Change([&] { m_Text.append(data, length); });
    }
    void Add(_KOVAMGR_DEV_STATE_TYPE_ state) {
        Change([&] { m_LastState = state; });
    }
    void Clear() {
        Change([&] {
            m_Text.clear();
            m_LastState = 0;
        });
    }

    bool WaitForText(const std::string& text) {
        return Wait([&] { return m_Text.find(text) != std::string::npos; });
    }
    bool WaitForLines(long count) {
        return Wait([&] { return std::count(m_Text.begin(), m_Text.end(), '\n') >= count; });
    }
    bool WaitForState(int state) {
        return Wait([&] { return m_LastState == state; });
    }
    std::string Text() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Text;
    }

  private:
    template <typename Action> void Change(Action action) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        action();
        m_Changed.notify_all();
    }
    template <typename Condition> bool Wait(Condition condition) {
        std::unique_lock<std::mutex> lock(m_Mutex);
        return m_Changed.wait_for(lock, std::chrono::seconds(3), condition);
    }

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::string m_Text;
    int m_LastState = 0;
};

Inbox s_Inbox;

void OnData(void* data, int length) {
    s_Inbox.Append(static_cast<const char*>(data), static_cast<size_t>(length));
}

void OnDeviceState(_KOVAMGR_DEV_STATE_TYPE_ state) { s_Inbox.Add(state); }

void Check(bool observed, const char* step) {
    std::printf("%s %s\n", observed ? "  [ok]  " : "  [FAIL]", step);
    if (!observed) {
        KOVAMGR_Release(); // no callback finds the inbox destroyed
        std::exit(EXIT_FAILURE);
    }
}

using DeviceList = std::unique_ptr<_KOVAMGR_DEVICEINFOLIST>;

DeviceList ListDevices() {
    DeviceList list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    Check(KOVAMGR_EnumeratePortInfo(list.get()) == KOVAMGR_OK, "devices listed");
    for (uint32_t d = 0; d < list->nDeviceCount; ++d) {
        const _KOVAMGR_DEVICEINFO& device = list->stDevice[d];
        std::printf("           %s: %s\n", device.szDeviceName, device.szDeviceText);
        for (uint32_t p = 0; p < device.nPortCount; ++p) {
            std::printf("             port %d  %s\n", device.stPort[p].nPortID,
                        device.stPort[p].szPortName);
        }
    }
    return list;
}

// The first device with this number of ports: the modem has two, the sensor one.
const _KOVAMGR_DEVICEINFO* FindByPortCount(const _KOVAMGR_DEVICEINFOLIST& list, uint32_t count) {
    for (uint32_t d = 0; d < list.nDeviceCount; ++d) {
        if (list.stDevice[d].nPortCount == count) {
            return &list.stDevice[d];
        }
    }
    return nullptr;
}

void OpenPort(int port) {
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "callback registered");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "port opened");
}

void Ask(int port, const std::string& command, const std::string& answer) {
    s_Inbox.Clear();
    const std::string line = command + "\r";
    long reason = 0;
    const int written =
        KOVAMGR_Write(port, line.data(), static_cast<long>(line.size()), 0, &reason);
    Check(written == static_cast<int>(line.size()), ("sent " + command).c_str());
    Check(s_Inbox.WaitForText(answer), ("received " + answer).c_str());
}

void Receive(long lines) {
    s_Inbox.Clear();
    Check(s_Inbox.WaitForLines(lines), "sensor data received");
    std::printf("%s", s_Inbox.Text().c_str());
}

void Command(const std::string& program, const char* verb, const std::string& device, int notice) {
    s_Inbox.Clear();
    const std::string line =
        "'" + program + "' --pid " + std::to_string(getpid()) + " " + verb + " '" + device + "'";
    std::fflush(stdout);
    Check(std::system(line.c_str()) == 0, (std::string(verb) + " " + device).c_str());
    Check(s_Inbox.WaitForState(notice), "notice received");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: live_session COMMAND\n");
        return 2;
    }
    const std::string program = argv[1];
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "library initialised");
    Check(KOVAMGR_RegisterDeviceStateProcessCallback(OnDeviceState) == KOVAMGR_OK,
          "registered for notices");
    const DeviceList before = ListDevices();
    const _KOVAMGR_DEVICEINFO* modem = FindByPortCount(*before, 2);
    const _KOVAMGR_DEVICEINFO* sensor = FindByPortCount(*before, 1);
    Check(modem != nullptr && sensor != nullptr, "a modem and a sensor are there");
    const int modemPort = modem->stPort[0].nPortID;
    const int sensorPort = sensor->stPort[0].nPortID;

    OpenPort(modemPort);
    Ask(modemPort, "AT", "OK");
    Ask(modemPort, "AT+CSQ", "+CSQ:");
    OpenPort(sensorPort);
    Receive(3);

    Command(program, "pull", sensor->szDeviceName, KOVAMGR_DEVICE_PULLOUT);
    Check(FindByPortCount(*ListDevices(), 1) == nullptr, "the sensor is gone");
    Ask(modemPort, "AT", "OK");
    Command(program, "plug", sensor->szDeviceName, KOVAMGR_DEVICE_INSERT);
    const DeviceList after = ListDevices();
    const _KOVAMGR_DEVICEINFO* again = FindByPortCount(*after, 1);
    Check(again != nullptr, "the sensor is back");
    Check(again->stPort[0].nPortID != sensorPort, "its port has a new identifier");
    OpenPort(again->stPort[0].nPortID);
    Receive(2);

    Check(KOVAMGR_Release() == KOVAMGR_OK, "library released");
    return EXIT_SUCCESS;
}

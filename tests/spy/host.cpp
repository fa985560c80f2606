// SPDX-License-Identifier: MIT
//
// A host that does what it is told, a command a line, and answers each with a line: what the library
// returned. It knows the public header only.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "KOVASMgr.h"
#include "tests/harness/wait_until.h"

namespace {

constexpr std::chrono::seconds kPatience{60};

std::mutex s_Mutex;
std::string s_Received; // guarded by s_Mutex
std::atomic<int> s_Notices{0};

void OnData(void* data, int length) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Received.append(static_cast<const char*>(data), static_cast<size_t>(length));
}

void OnState(_KOVAMGR_DEV_STATE_TYPE_) { ++s_Notices; }

bool HasReceived(const std::string& text) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return s_Received.find(text) != std::string::npos;
}

// -1 when no port has this name.
int IdOf(const std::string& name) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    for (uint32_t d = 0; d < list->nDeviceCount; ++d) {
        for (uint32_t p = 0; p < list->stDevice[d].nPortCount; ++p) {
            if (name == list->stDevice[d].stPort[p].szPortName) {
                return list->stDevice[d].stPort[p].nPortID;
            }
        }
    }
    return -1;
}

std::string Init(std::istream& words) {
    std::string directory;
    words >> directory;
    const int result = KOVAMGR_Init(directory.c_str());
    KOVAMGR_RegisterDeviceStateProcessCallback(OnState);
    return std::to_string(result);
}

std::string Devices(std::istream&) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    return std::to_string(list->nDeviceCount);
}

std::string Open(std::istream& words) {
    std::string port;
    words >> port;
    return std::to_string(KOVAMGR_Open(IdOf(port)));
}

std::string Close(std::istream& words) {
    std::string port;
    words >> port;
    return std::to_string(KOVAMGR_Close(IdOf(port)));
}

std::string Listen(std::istream& words) {
    std::string port;
    words >> port;
    return std::to_string(KOVAMGR_RegisterCommDataReadCallback(OnData, IdOf(port)));
}

// A line end at its end is written as "\\r".
std::string Unescaped(const std::string& text) {
    const bool hasEnd = text.size() > 1 && text.compare(text.size() - 2, 2, "\\r") == 0;
    return hasEnd ? text.substr(0, text.size() - 2) + "\r" : text;
}

// What the function returned, and what it stored.
std::string Write(std::istream& words) {
    std::string port;
    std::string text;
    words >> port >> text;
    text = Unescaped(text);
    long error = 0;
    const auto length = static_cast<long>(text.size());
    const int count = KOVAMGR_Write(IdOf(port), text.data(), length, 0, &error);
    return std::to_string(count) + " " + std::to_string(error);
}

// Writes from several threads at once.
std::string Storm(std::istream& words) {
    std::string port;
    int threads = 0;
    int writes = 0;
    words >> port >> threads >> writes;
    const int id = IdOf(port);
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([=] {
            for (int i = 0; i < writes; ++i) {
                KOVAMGR_Write(id, "storm", 5, 0, nullptr);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    return "done";
}

// Lets threads write for as long as the process lives.
std::string Busy(std::istream& words) {
    std::string port;
    words >> port;
    const int id = IdOf(port);
    for (int t = 0; t < 4; ++t) {
        std::thread([=] {
            while (true) {
                KOVAMGR_Write(id, "busy", 4, 0, nullptr);
            }
        }).detach();
    }
    return "busy";
}

std::string Received(std::istream& words) {
    std::string text;
    words >> text;
    return WaitUntil([&] { return HasReceived(text); }, kPatience) ? "yes" : "no";
}

std::string Notices(std::istream& words) {
    int count = 0;
    words >> count;
    WaitUntil([&] { return s_Notices >= count; }, kPatience);
    return std::to_string(s_Notices);
}

std::string Release(std::istream&) { return std::to_string(KOVAMGR_Release()); }

using Command = std::function<std::string(std::istream&)>;

std::string Answer(const std::string& line) {
    static const std::map<std::string, Command> commands = {
        {"init", Init},       {"devices", Devices}, {"open", Open},   {"close", Close},
        {"listen", Listen},   {"write", Write},     {"storm", Storm}, {"received", Received},
        {"notices", Notices}, {"release", Release}, {"busy", Busy}};
    std::istringstream words(line);
    std::string name;
    words >> name;
    const auto found = commands.find(name);
    return found == commands.end() ? "unknown" : found->second(words);
}

} // namespace

// The library prints trace lines to standard output; answers go to standard error.
int main() {
    std::string line;
    while (std::getline(std::cin, line)) {
        std::cerr << Answer(line) << std::endl;
    }
    return 0;
}

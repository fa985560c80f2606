// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/inbox.h"

#include <array>
#include <chrono>
#include <mutex>
#include <stdexcept>

#include "KOVASMgr.h"
#include "tests/harness/wait_until.h"

namespace {

std::mutex s_Mutex;
std::array<std::string, Inbox::kCount> s_Received;

std::string& Bytes(int number) { return s_Received.at(static_cast<size_t>(number)); }

template <int number> void OnData(void* data, int length) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    Bytes(number).append(static_cast<const char*>(data), static_cast<size_t>(length));
}

constexpr std::array<KOVAMGR_READ_CALLBACK, Inbox::kCount> kCallbacks{OnData<0>, OnData<1>,
                                                                      OnData<2>, OnData<3>};

} // namespace

Inbox::Inbox(int number, int port) : m_Number(number) {
    const auto callback = kCallbacks.at(static_cast<size_t>(number));
    if (KOVAMGR_RegisterCommDataReadCallback(callback, port) != KOVAMGR_OK) {
        throw std::runtime_error("no callback for port " + std::to_string(port));
    }
    const std::lock_guard<std::mutex> lock(s_Mutex);
    Bytes(number).clear();
}

std::string Inbox::Received() const {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return Bytes(m_Number);
}

bool Inbox::WaitFor(const std::string& text) const {
    return WaitUntil([&] { return Received() == text; });
}

bool Inbox::WaitForSize(std::size_t size) const {
    return WaitUntil([&] { return Received().size() >= size; }, std::chrono::seconds(30));
}

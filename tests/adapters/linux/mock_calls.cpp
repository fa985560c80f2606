// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <libudev.h>

#include <cstdarg>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

struct Actions {
    std::string node;
    std::function<void()> before;
    std::function<void()> after;
};

std::mutex s_Mutex;
Actions* s_Open = nullptr;
Actions* s_Scan = nullptr;

void Set(Actions*& place, Actions actions) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    delete std::exchange(place, new Actions(std::move(actions)));
}

Actions Take(Actions*& place, const char* node) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    if (place == nullptr || place->node != node) {
        return {};
    }
    Actions actions = *place;
    delete std::exchange(place, nullptr);
    return actions;
}

void Do(const std::function<void()>& action) {
    if (action) {
        action();
    }
}

template <typename Function> Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

mode_t ModeOf(int flags, va_list arguments) {
    const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return hasMode ? va_arg(arguments, mode_t) : 0;
}

int OpenWith(decltype(open)* next, const char* path, int flags, mode_t mode) {
    const bool isNode = path != nullptr && std::strncmp(path, "/dev/", 5) == 0;
    const Actions actions = isNode ? Take(s_Open, path) : Actions{};
    Do(actions.before);
    const int descriptor = next(path, flags, mode);
    Do(actions.after);
    return descriptor;
}

} // namespace

void OnNextOpen(const std::string& node, std::function<void()> before,
                std::function<void()> after) {
    Set(s_Open, {node, std::move(before), std::move(after)});
}

void OnNextScan(std::function<void()> before, std::function<void()> after) {
    Set(s_Scan, {"", std::move(before), std::move(after)});
}

// The program's own functions come before those of the libraries: the adapter's calls pass here.

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
    static auto* const s_Next = Next<decltype(open)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenWith(s_Next, path, flags, mode);
}

extern "C" __attribute__((visibility("default"))) int open64(const char* path, int flags, ...) {
    static auto* const s_Next = Next<decltype(open)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenWith(s_Next, path, flags, mode);
}

extern "C" __attribute__((visibility("default"))) int
udev_enumerate_scan_devices(udev_enumerate* enumeration) {
    static auto* const s_Next =
        Next<decltype(udev_enumerate_scan_devices)>("udev_enumerate_scan_devices");
    const Actions actions = Take(s_Scan, "");
    Do(actions.before);
    const int result = s_Next(enumeration);
    Do(actions.after);
    return result;
}

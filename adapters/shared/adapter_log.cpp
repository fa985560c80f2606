// SPDX-License-Identifier: MIT
#include "adapters/shared/adapter_log.h"

#include <dlfcn.h>

#include <cstring>
#include <mutex>
#include <new>
#include <set>

#include "KOVASMgrLog.h"

namespace {

constexpr size_t kMaxQuoted = 200;
constexpr size_t kMaxRemembered = 128;

using LogFunction = int (*)(const char* format, ...);

// A host may have a function of its own called ERRO_LOG, and the dynamic linker would bind our
// plain reference to that one. A look-up in the library itself cannot be diverted.
LogFunction FindLogFunction(const char* name, LogFunction linked) {
    void* library = dlopen(KOVASMGR_SONAME, RTLD_NOLOAD | RTLD_LAZY);
    if (library == nullptr) {
        return linked;
    }
    void* found = dlsym(library, name);
    dlclose(library); // it stays: this adapter is linked to it
    return found == nullptr ? linked : reinterpret_cast<LogFunction>(found);
}

struct LogFunctions {
    LogFunction info = FindLogFunction("INFO_LOG", INFO_LOG);
    LogFunction error = FindLogFunction("ERRO_LOG", ERRO_LOG);
};

const LogFunctions& Functions() {
    static const LogFunctions functions;
    return functions;
}

// Never destroyed: threads may still log while the process exits.
struct LoggedErrors {
    std::mutex mutex;
    std::set<std::string> texts;
};

LoggedErrors& Logged() {
    alignas(LoggedErrors) static unsigned char storage[sizeof(LoggedErrors)];
    static auto* logged = new (storage) LoggedErrors;
    return *logged;
}

bool IsNewError(const std::string& text) {
    LoggedErrors& logged = Logged();
    const std::lock_guard<std::mutex> lock(logged.mutex);
    if (logged.texts.size() >= kMaxRemembered) {
        logged.texts.clear();
    }
    return logged.texts.insert(text).second;
}

// A line break in a text would forge a line of its own.
std::string OneLine(std::string text) {
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f) {
            character = '?';
        }
    }
    return text;
}

} // namespace

void PrepareLog() { Functions(); }

void LogInfo(const std::string& text) { Functions().info("OSAdapt: %s", OneLine(text).c_str()); }

void LogError(const std::string& text) { Functions().error("OSAdapt: %s", OneLine(text).c_str()); }

void LogErrorOnce(const std::string& text) {
    if (IsNewError(text)) {
        LogError(text);
    }
}

void ForgetLoggedErrors() {
    LoggedErrors& logged = Logged();
    const std::lock_guard<std::mutex> lock(logged.mutex);
    logged.texts.clear();
}

std::string ErrnoText(int error) {
    char buffer[128] = "";
    // The GNU version, which returns the text and may leave the buffer alone.
    const char* text = strerror_r(error, buffer, sizeof buffer);
    return std::string(text) + " (errno " + std::to_string(error) + ")";
}

std::string Printable(const std::string& text) {
    const std::string printable = OneLine(text.substr(0, kMaxQuoted));
    return text.size() > kMaxQuoted ? printable + "..." : printable;
}

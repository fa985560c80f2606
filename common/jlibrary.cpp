// SPDX-License-Identifier: MIT
#include "common/jlibrary.h"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#if defined(__linux__)
#include <sys/auxv.h>
#endif

namespace {

namespace fs = std::filesystem;

#if defined(__APPLE__)
constexpr const char* kSuffix = ".dylib";
#else
constexpr const char* kSuffix = ".so";
#endif

bool HasRaisedPrivileges() {
#if defined(__linux__)
    return getauxval(AT_SECURE) != 0;
#else
    return issetugid() != 0;
#endif
}

// Empty when the directory holds none of the three.
fs::path FindIn(const fs::path& directory, const std::string& name) {
    for (const std::string& file : {"lib" + name + kSuffix, name + kSuffix, name}) {
        std::error_code error;
        fs::path candidate = directory / file;
        if (fs::is_regular_file(candidate, error)) {
            return candidate;
        }
    }
    return {};
}

fs::path Find(const fs::path& path) {
    const std::string name = path.filename().string();
    fs::path found;
    if (!HasRaisedPrivileges()) {
        found = FindIn(path.parent_path(), name);
    }
    return found.empty() ? FindIn(KOVASMGR_ADAPTER_DIR, name) : found;
}

} // namespace

JLibrary::JLibrary(const std::string& path) : m_pHandle(nullptr) {
    const fs::path file = Find(path);
    if (!file.empty()) {
        m_pHandle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
}

void* JLibrary::resolve(const char* name) const {
    return m_pHandle == nullptr ? nullptr : dlsym(m_pHandle, name);
}

void JLibrary::unload() {
    if (m_pHandle != nullptr) {
        dlclose(m_pHandle);
        m_pHandle = nullptr;
    }
}

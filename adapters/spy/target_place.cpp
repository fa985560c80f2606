// SPDX-License-Identifier: MIT
#include "adapters/spy/target_place.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"

namespace {

namespace fs = std::filesystem;

// The first of the names that the library itself looks for; empty when there is none.
std::string AdapterFileIn(const fs::path& directory) {
    for (const char* const name : {"libOSAdapt.so", "OSAdapt.so", "OSAdapt"}) {
        std::error_code error;
        const fs::path file = directory / name;
        if (fs::is_regular_file(file, error)) {
            return file.string();
        }
    }
    return "";
}

// The directory that the spy's own lies in; empty when that cannot be found out. A host's directory
// may hold no more than a link to the spy.
fs::path OwnRoom() {
    Dl_info info{};
    std::error_code error;
    if (dladdr(reinterpret_cast<void*>(&OS_ADAPT_Write), &info) == 0) {
        return {};
    }
    const fs::path file = fs::canonical(info.dli_fname, error);
    return error ? fs::path() : file.parent_path().parent_path();
}

std::string FileOfName(const std::string& name) {
    const fs::path room = OwnRoom();
    std::string file = room.empty() ? "" : AdapterFileIn(room / name);
    if (file.empty()) {
        file = AdapterFileIn(fs::path(KOVASMGR_ADAPTER_DIR) / name);
    }
    if (file.empty()) {
        throw std::runtime_error("there is no adapter '" + Printable(name) + "' in " +
                                 (room.empty() ? "" : Printable(room.string()) + " or ") +
                                 KOVASMGR_ADAPTER_DIR);
    }
    return file;
}

std::string FileInDirectory(const std::string& directory, const char* advice) {
    std::string file = AdapterFileIn(directory);
    if (file.empty()) {
        throw std::runtime_error("'" + Printable(directory) + "' holds no libOSAdapt.so; " +
                                 advice);
    }
    return file;
}

} // namespace

std::string FindTargetFile(const std::string& choice) {
    if (choice.empty()) {
        return FileInDirectory(KOVASMGR_ADAPTER_DIR, "name an adapter by KOVASMGR_SPY_ADAPTER");
    }
    if (choice.front() == '/') {
        return FileInDirectory(choice, "KOVASMGR_SPY_ADAPTER names an adapter's directory");
    }
    if (choice.find('/') != std::string::npos || choice == "." || choice == "..") {
        throw std::runtime_error("KOVASMGR_SPY_ADAPTER must be a name or an absolute path, not '" +
                                 Printable(choice) + "'");
    }
    return FileOfName(choice);
}

// SPDX-License-Identifier: MIT
#include "tools/kovasctl/adapter_place.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/program_place.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kPlatformsAdapter = "linux";

// Variables that name a file, and may do so from where the person stands.
constexpr const char* kFileVariables[] = {"KOVASMGR_VIRTUAL_SCENARIO", "KOVASMGR_SPY_RECORD",
                                          "KOVASMGR_SPY_PCAP"};

bool IsDirectory(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

fs::path InstalledAdapters() {
    return InstalledDirectory(KOVASCTL_ADAPTERS_FROM_PROGRAM, KOVASMGR_ADAPTER_DIR);
}

fs::path NamedAdapter(const std::string& name) {
    const fs::path tree = BuildTree();
    return tree.empty() ? InstalledAdapters() / name : tree / "adapters" / name;
}

fs::path DefaultAdapter() {
    return BuildTree().empty() ? InstalledAdapters() : NamedAdapter(kPlatformsAdapter);
}

AdapterPlace Place(const fs::path& directory, const std::string& origin) {
    std::error_code error;
    const fs::path real = fs::canonical(directory, error);
    const std::string path = (error ? fs::absolute(directory) : real).string();
    return {path, AdapterFileIn(path), origin};
}

bool IsName(const std::string& choice) {
    return choice.find('/') == std::string::npos && choice != "." && choice != "..";
}

// These are never looked for where a person stands.
bool IsOneOfOurs(const std::string& choice) {
    return choice == kPlatformsAdapter || choice == "virtual" || choice == "spy";
}

void KeepMeaningOf(const char* variable) {
    const char* value = getenv(variable);
    if (value != nullptr && *value != '\0' && *value != '/') {
        setenv(variable, fs::absolute(value).c_str(), 1);
    }
}

} // namespace

const std::vector<std::string>& AdapterFileNames() {
    static const std::vector<std::string> names = {"libOSAdapt.so", "OSAdapt.so", "OSAdapt"};
    return names;
}

std::string AdapterFileIn(const std::string& directory) {
    for (const std::string& name : AdapterFileNames()) {
        std::error_code error;
        const fs::path file = fs::path(directory) / name;
        if (fs::is_regular_file(file, error)) {
            return file.string();
        }
    }
    return "";
}

std::string LibrarysOwnDirectory() { return KOVASMGR_ADAPTER_DIR; }

AdapterPlace FindAdapter(const std::string& choice) {
    if (choice.empty()) {
        return Place(DefaultAdapter(), "the default");
    }
    const std::string origin = "chosen: " + choice;
    if (IsName(choice) && IsDirectory(NamedAdapter(choice))) {
        return Place(NamedAdapter(choice), origin);
    }
    if (!IsName(choice) && !IsDirectory(choice)) {
        throw WrongUse(choice + " is no directory");
    }
    if (IsOneOfOurs(choice) || !IsDirectory(choice)) {
        throw WrongUse(choice + " is neither a directory nor an adapter in " +
                       NamedAdapter("").parent_path().string());
    }
    return Place(choice, origin);
}

void EnterAdapterDirectory(const AdapterPlace& adapter) {
    if (adapter.file.empty()) {
        throw Failure(adapter.directory + " holds no adapter (" + AdapterFileNames().front() +
                      "); choose one by --adapter");
    }
    for (const char* variable : kFileVariables) {
        KeepMeaningOf(variable);
    }
    if (chdir(adapter.directory.c_str()) != 0) {
        throw Failure(adapter.directory + ": " + std::strerror(errno));
    }
}

// SPDX-License-Identifier: MIT
#include "tools/kovasctl/program_place.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

std::string ProgramDirectory() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string BuildTree() {
    const fs::path tree = fs::path(ProgramDirectory()).parent_path();
    std::error_code error;
    return fs::exists(tree / "CMakeCache.txt", error) ? tree.string() : "";
}

std::string InstalledDirectory(const std::string& fromProgram, const std::string& otherwise) {
    const fs::path moved = (fs::path(ProgramDirectory()) / fromProgram).lexically_normal();
    std::error_code error;
    return fs::is_directory(moved, error) ? moved.string() : otherwise;
}

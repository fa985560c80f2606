// SPDX-License-Identifier: MIT
#include "tests/harness/scratch_directory.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory() : m_Before(fs::current_path()) {
    fs::create_directories(KOVASMGR_TEST_SCRATCH_DIR);
    std::string path = std::string(KOVASMGR_TEST_SCRATCH_DIR) + "/XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no scratch directory " + path);
    }
    m_Path = fs::canonical(path);
    fs::create_directory(LogDirectory());
    fs::current_path(m_Path);
}

ScratchDirectory::ScratchDirectory(const std::string& adapter) : ScratchDirectory() {
    UseAdapter(adapter);
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    fs::current_path(m_Before, ignored);
    fs::remove_all(m_Path, ignored);
}

void ScratchDirectory::UseAdapter(const std::string& adapter, const std::string& name) const {
    const fs::path link = fs::path(m_Path) / name;
    fs::remove(link);
    fs::create_symlink(AdapterFile(adapter), link);
}

std::string ScratchDirectory::AdapterFile(const std::string& adapter) {
    return std::string(KOVASMGR_TEST_FAKES_DIR) + "/" + adapter + "/libOSAdapt.so";
}

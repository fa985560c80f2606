// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_system.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

MockSystem::MockSystem() {
    m_Root = "/tmp/kova-mock-XXXXXX"; // short: sockets are bound in it
    if (mkdtemp(m_Root.data()) == nullptr) {
        throw std::runtime_error("no directory for the devices");
    }
    for (const char* name : {"/graves", "/ioctl", "/dev/.node", "/sys/class/tty", "/sys/devices"}) {
        fs::create_directories(m_Root + name);
    }
    WriteFile("/sys/mocked", "");
    setenv("UMOCKDEV_DIR", m_Root.c_str(), 1);
    if (access("/sys/mocked", F_OK) != 0) {
        fs::remove_all(m_Root);
        throw std::runtime_error("run this test with LD_PRELOAD=libumockdev-preload.so.0");
    }
}

MockSystem::~MockSystem() {
    unsetenv("UMOCKDEV_DIR");
    std::error_code ignored;
    fs::remove_all(m_Root, ignored);
}

bool MockSystem::Exists(const std::string& path) const {
    return fs::exists(fs::symlink_status(Real(path)));
}

void MockSystem::MakeDirectory(const std::string& path) const {
    fs::create_directories(Real(path));
}

void MockSystem::WriteFile(const std::string& path, const std::string& bytes) const {
    fs::create_directories(fs::path(Real(path)).parent_path());
    std::ofstream(Real(path), std::ios::binary) << bytes;
}

void MockSystem::Link(const std::string& path, const std::string& target) const {
    const fs::path from = fs::path(path).parent_path();
    fs::create_directories(Real(from));
    fs::create_symlink(fs::path(target).lexically_relative(from), Real(path));
}

void MockSystem::MakeNode(const std::string& path, const std::string& terminal,
                          const std::string& number) const {
    fs::create_symlink(number, m_Root + "/dev/.node/" + fs::path(path).filename().string());
    fs::create_symlink(terminal, Real(path));
}

void MockSystem::Remove(const std::string& path) {
    if (!Exists(path)) {
        return;
    }
    if (path.compare(0, 5, "/dev/") == 0) {
        fs::remove(m_Root + "/dev/.node/" + fs::path(path).filename().string());
        fs::remove(Real(path));
        return;
    }
    // Kept where it is not seen: the number of a deleted one would be given out again.
    fs::rename(Real(path), m_Root + "/graves/" + std::to_string(++m_Graves));
}

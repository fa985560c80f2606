// SPDX-License-Identifier: MIT
#include "tests/adapters/virtual_bench.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "KOVASMgrLog.h"

const char* const VirtualBench::kTwoDevices = R"(
[[device]]
name = "left"
[[device.port]]
name = "l0"
[[device.port]]
name = "l1"

[[device]]
name = "right"
[[device.port]]
name = "r0"
[[device.port]]
name = "r1"
)";

VirtualBench::VirtualBench() {
    std::string path = "/tmp/kova-test-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no control directory");
    }
    m_Control = path;
    setenv("KOVASMGR_VIRTUAL_DIR", m_Control.c_str(), 1);
    unsetenv("KOVASMGR_VIRTUAL_SCENARIO");
    KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str());
}

VirtualBench::~VirtualBench() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Control, ignored);
}

std::string VirtualBench::UseScenario(const std::string& text) const {
    const std::string path = m_Scratch.Path() + "/scenario.toml";
    std::ofstream(path) << text;
    setenv("KOVASMGR_VIRTUAL_SCENARIO", path.c_str(), 1);
    return path;
}

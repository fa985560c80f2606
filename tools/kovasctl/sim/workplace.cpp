// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/workplace.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/streams.h"

namespace fs = std::filesystem;

SimWorkplace::SimWorkplace(const std::string& given, const AdapterPlace& adapter)
    : m_Directory(given), m_Link(Path() + "/" + AdapterFileNames().front()),
      m_IsPrivate(given.empty()) {
    if (adapter.file.empty()) {
        throw Failure(adapter.directory + " holds no adapter; choose one by --adapter");
    }
    if (symlink(adapter.file.c_str(), m_Link.c_str()) != 0) {
        throw Failure(m_Link + ": " + std::strerror(errno));
    }
}

SimWorkplace::~SimWorkplace() { unlink(m_Link.c_str()); }

void SimWorkplace::Look(int status) {
    unlink(m_Link.c_str());
    if (m_IsPrivate && (status != kDone || HasMoreThanTheLog())) {
        m_Directory.Keep();
        Message("what the host left is in " + Path());
    }
}

bool SimWorkplace::HasMoreThanTheLog() const {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(Path(), error)) {
        if (entry.path() != m_Directory.File()) {
            return true;
        }
    }
    return false;
}

// SPDX-License-Identifier: MIT
#include "bench/compare/pairs.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "bench/descriptor_limit.h"

void FailWithErrno(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

PairSubject::PairSubject(size_t ports) {
    RaiseDescriptorLimit();
    for (size_t i = 0; i < ports; ++i) {
        const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
            FailWithErrno("no pseudo-terminal");
        }
        m_FarEnds.push_back(master);
        m_Names.emplace_back(ptsname(master));
    }
}

PairSubject::~PairSubject() {
    for (const int descriptor : m_FarEnds) {
        close(descriptor);
    }
}

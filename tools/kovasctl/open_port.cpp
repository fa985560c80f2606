// SPDX-License-Identifier: MIT
#include "tools/kovasctl/open_port.h"

#include <algorithm>
#include <new>

#include "KOVASMgr.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/line_settings.h"
#include "tools/kovasctl/printable.h"

OpenPort* OpenPort::s_Active = nullptr;

OpenPort::OpenPort(Library& library, const ChosenPort& port, const std::string& lineSettings)
    : m_Library(library), m_Port(port) {
    if (!lineSettings.empty()) {
        SetLine(library, port.port.name, lineSettings);
    }
    s_Active = this;
    const uint64_t mark = library.Mark();
    int result = KOVAMGR_RegisterCommDataReadCallback(OnData, port.port.id);
    if (result == KOVAMGR_OK) {
        result = KOVAMGR_Open(port.port.id);
    }
    if (result != KOVAMGR_OK) {
        KOVAMGR_UnRegisterCommDataReadCallback(OnData, port.port.id);
        throw Failure(library.Explain(Printable(port.port.name) + " cannot be opened", result, mark,
                                      port.port.name));
    }
}

OpenPort::~OpenPort() {
    m_Inbox.Stop();
    KOVAMGR_Close(m_Port.port.id);
    KOVAMGR_UnRegisterCommDataReadCallback(OnData, m_Port.port.id);
}

// Exceptions must not leave a callback; without memory these bytes are lost.
void OpenPort::OnData(void* data, int length) {
    try {
        s_Active->m_Inbox.Append(static_cast<const char*>(data), static_cast<size_t>(length));
    } catch (const std::bad_alloc&) {
    }
}

size_t OpenPort::Write(std::string_view data) {
    const uint64_t mark = m_Library.Mark();
    const size_t size = std::min(data.size(), kMostPerWrite);
    long reason = 0;
    const int result =
        KOVAMGR_Write(m_Port.port.id, data.data(), static_cast<long>(size), 0, &reason);
    if (result < 0 || static_cast<size_t>(result) > size) {
        throw Failure(m_Library.Explain(Printable(m_Port.port.name) + " takes no data",
                                        result < 0 ? reason : result, mark, m_Port.port.name));
    }
    return static_cast<size_t>(result);
}

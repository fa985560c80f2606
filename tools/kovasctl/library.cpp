// SPDX-License-Identifier: MIT
#include "tools/kovasctl/library.h"

#include "KOVASMgr.h"
#include "tools/kovasctl/adapter_probe.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/result_code.h"
#include "tools/kovasctl/signals.h"

Library::Library(const GlobalOptions& options)
    : m_Adapter(FindAdapter(options.adapter)), m_Log(options.logDirectory) {
    EnterAdapterDirectory(m_Adapter);
    Initialise();
    try {
        ThrowIfInterrupted();
    } catch (...) {
        KOVAMGR_Release(); // without an object there is no destructor
        throw;
    }
}

Library::~Library() { KOVAMGR_Release(); }

void Library::Initialise() {
    const int result = KOVAMGR_Init(m_Log.Path().c_str());
    if (result == KOVAMGR_OK) {
        return;
    }
    std::string reason = m_Log.ReasonSince(0, "");
    if (reason.empty()) {
        reason = ProbeAdapter(m_Adapter.file).Problem();
    }
    throw Failure("the adapter " + m_Adapter.file + " cannot be used: " + ResultCodeText(result) +
                  ReasonLines(reason));
}

std::string Library::ReasonLines(const std::string& reason) {
    m_Log.Keep();
    return (reason.empty() ? "" : "\n  reason: " + reason) + "\n  log: " + m_Log.File();
}

std::string Library::Explain(const std::string& text, long code, uint64_t mark,
                             const std::string& subject) {
    return text + ": " + ResultCodeText(code) + ReasonLines(m_Log.ReasonSince(mark, subject));
}

std::string Library::Reason(uint64_t mark, const std::string& subject) {
    const std::string reason = m_Log.ReasonSince(mark, subject);
    return reason.empty() ? "" : ReasonLines(reason);
}

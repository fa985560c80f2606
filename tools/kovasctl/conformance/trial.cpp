// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/trial.h"

#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/packet.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/verdict.h"
#include "tools/kovasctl/waiting.h"

void Trial::Step(const std::string& text) const { Send(m_Tool, {Packet::Kind::Step, text}); }

Subject& Trial::Adapter() {
    if (m_Adapter == nullptr) {
        Step("loading");
        m_Adapter = std::make_unique<Subject>(m_Options.file);
    }
    return *m_Adapter;
}

Listing Trial::Enumerate() {
    const auto roomy = std::make_unique<RoomyList>();
    if (Adapter().Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list) != OS_ADAPT_OK) {
        throw NotTried("the enumeration fails");
    }
    return ToListing(roomy->list);
}

void Trial::Register() {
    if (Adapter().Register(NoticeBook::OnNotice) != OS_ADAPT_OK) {
        throw NotTried("the registration fails");
    }
}

int Trial::Open(const std::string& portName) {
    int handle = OS_ADAPT_NO_HANDLE;
    if (Adapter().Open(portName.c_str(), &handle) != OS_ADAPT_OK) {
        throw NotTried("port '" + portName + "' does not open");
    }
    if (handle == OS_ADAPT_NO_HANDLE) {
        throw NotTried("port '" + portName + "' opens with the handle -1, see R12a");
    }
    return handle;
}

void Trial::StartCommand(const char* name) const { Send(m_Tool, {Packet::Kind::Command, name}); }

std::string Trial::WaitForCommand(const char* name) {
    while (m_Ended.count(name) == 0) {
        if (!TakeAnswer()) {
            return "the tool has gone";
        }
    }
    return m_Ended[name];
}

void Trial::WaitForCommand(const char* name, double seconds) {
    HoldsWithin(seconds,
                [&] { return m_Ended.count(name) != 0 || (IsReadable(m_Tool) && !TakeAnswer()); });
}

bool Trial::TakeAnswer() {
    const auto answer = Receive(m_Tool);
    if (answer) {
        const size_t end = answer->text.find('\n');
        m_Ended[answer->text.substr(0, end)] = answer->text.substr(end + 1);
    }
    return answer.has_value();
}

void Trial::Unload() {
    Step("unloading");
    m_Adapter->Unload();
    m_Adapter.reset();
}

void Trial::Leave() {
    if (m_Adapter != nullptr) {
        m_Adapter->UnRegister(NoticeBook::OnNotice);
    }
}

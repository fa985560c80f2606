// SPDX-License-Identifier: MIT
#include <climits>

#include "tests/proof/model/decoder.h"

namespace model {
int Decoder::PortNumber() {
    static constexpr int kNumbers[] = {1, 2, 3, 4, 5, 6, 7, 1, 2, 8, 0, -1, INT_MAX};
    return m_Bytes.OneIn(4) ? m_Listening : m_Bytes.Pick(kNumbers);
}

int Decoder::Handle() {
    static constexpr int kHandles[] = {1, 1, 2, 3, -1, 0, -2, INT_MIN};
    return m_Bytes.Pick(kHandles);
}

void Decoder::Init() {
    static const std::string kDirectories[] = {kLogDirectory, kLogDirectory, kLogDirectory, "",
                                               "missing"};
    Operation& init = Add(Kind::kInit);
    init.text = m_Bytes.Pick(kDirectories);
    init.isNull = init.text.empty() && m_Bytes.OneIn(2);
}

void Decoder::Release() {
    Add(Kind::kRelease);
    if (!m_Bytes.OneIn(4)) {
        Init();
    }
}

void Decoder::Open() { Add(Kind::kOpen, PortNumber()); }

void Decoder::Close() { Add(Kind::kClose, PortNumber()); }

Operation Decoder::WriteOperation() {
    static constexpr long kLengths[] = {0, -1, 1, LONG_MIN};
    static const std::string kTexts[] = {"AT\r", "hello", std::string("\0\x01", 2),
                                         std::string(5000, 'w')};
    Operation write;
    write.kind = Kind::kWrite;
    write.number = PortNumber();
    write.text = m_Bytes.Pick(kTexts);
    const int oddity = m_Bytes.Below(16);
    write.isNull = oddity == 15;
    write.isResultNull = oddity == 14;
    if (oddity == 13) {
        write.length = m_Bytes.Pick(kLengths);
    }
    return write;
}

void Decoder::Write() { m_Sequence.push_back(WriteOperation()); }

void Decoder::PortState() { Add(Kind::kPortState, PortNumber()); }

void Decoder::Enumerate() { Add(Kind::kEnumerate).isNull = m_Bytes.OneIn(16); }

void Decoder::AddRead() {
    const int callback = m_Bytes.OneIn(16) ? kNoCallback : m_Bytes.Below(kReadCallbacks);
    Add(Kind::kAddRead, PortNumber(), callback);
}

// What it takes to receive something.
void Decoder::Listen() {
    m_Listening = PortNumber();
    const int port = m_Listening;
    const int callbacks = m_Bytes.Below(kReadCallbacks);
    for (int i = 0; i < callbacks; ++i) {
        Add(Kind::kAddRead, port, m_Bytes.Below(kReadCallbacks));
    }
    if (m_Bytes.OneIn(3)) {
        Action();
    }
    Add(Kind::kOpen, port);
    AddData();
    Add(Kind::kSweep);
}

void Decoder::RemoveRead() {
    const int callback = m_Bytes.OneIn(16) ? kNoCallback : m_Bytes.Below(kReadCallbacks);
    Add(Kind::kRemoveRead, PortNumber(), callback);
}

void Decoder::AddState() {
    const int callbacks = 1 + m_Bytes.Below(3);
    for (int i = 0; i < callbacks; ++i) {
        Add(Kind::kAddState, 0, m_Bytes.OneIn(16) ? kNoCallback : m_Bytes.Below(kStateCallbacks));
    }
}

void Decoder::RemoveState() {
    Add(Kind::kRemoveState, 0, m_Bytes.OneIn(16) ? kNoCallback : m_Bytes.Below(kStateCallbacks));
}

void Decoder::Notice() {
    static constexpr int kStatuses[] = {0, 0, 0, 1, 1, 1,  1,       0,
                                        1, 0, 1, 2, 5, -1, INT_MIN, INT_MAX};
    Add(Kind::kNotice, m_Bytes.Pick(kStatuses));
}

void Decoder::Sweep() { Add(Kind::kSweep); }

void Decoder::ReadHandle() { Add(Kind::kReadHandle, Handle()); }

void Decoder::ReleaseDevice() {
    Operation& release = Add(Kind::kReleaseDevice);
    release.isNull = m_Bytes.OneIn(8);
    release.text = m_Tables.DeviceName();
}

void Decoder::DeletePort() { Add(Kind::kDeletePort, PortNumber()); }

} // namespace model

// SPDX-License-Identifier: MIT
#include "tests/proof/model/decoder.h"

namespace model {

// Most changes are told of, and most of them as what they are.
void Decoder::Attach() {
    Add(Kind::kTable).table = m_Tables.Change();
    const int told = m_Bytes.Below(8);
    if (told < 3) {
        Add(Kind::kNotice, 0);
    } else if (told < 7) {
        Add(Kind::kNotice, 1);
    }
}

void Decoder::Result() {
    static constexpr int kResults[] = {30001, 0, -1, 30000};
    static constexpr int kTimes[] = {1, 1, 1, 1, 2, 2, 3, 0};
    Operation& result = Add(Kind::kResult, m_Bytes.Pick(kResults));
    result.function = static_cast<Function>(m_Bytes.Below(kFunctions));
    result.times = m_Bytes.Pick(kTimes);
}

void Decoder::NextHandle() { Add(Kind::kNextHandle, Handle()).isNull = m_Bytes.OneIn(8); }

void Decoder::WriteCount() {
    static constexpr long kCounts[] = {0, 1, -1, 20001, 20006, (1L << 32) + 5};
    Operation& count = Add(Kind::kWriteCount);
    count.isNull = m_Bytes.OneIn(4);
    if (m_Bytes.OneIn(2)) {
        count.length = m_Bytes.Pick(kCounts);
    }
}

void Decoder::AddData() {
    static constexpr long kCounts[] = {0, -1, 1, 4096, 4097, 1L << 40};
    static const std::string kTexts[] = {"x", "hello", "", std::string(4096, 'r'),
                                         std::string(5000, 's')};
    Operation& data = Add(Kind::kData);
    data.read.bytes = m_Bytes.Pick(kTexts);
    const int oddity = m_Bytes.Below(8);
    data.read.isCountStored = oddity != 7 || m_Host == Host::kThreaded; // reads come between
    if (oddity == 6) {
        data.read.count = m_Bytes.Pick(kCounts);
    }
}

// Mostly followed by a sweep, which then hands it out.
void Decoder::Data() {
    AddData();
    if (!m_Bytes.OneIn(4)) {
        Add(Kind::kSweep);
    }
}

// The next three take something away for one step.

void Decoder::Missing() {
    Add(Kind::kMissing, m_Bytes.Below(kFunctions));
    Step();
    Add(Kind::kMissing, kFunctions);
}

void Decoder::SetInit() {
    Add(Kind::kSetInit, 0);
    Step();
    Add(Kind::kSetInit, 1);
}

void Decoder::SetRun() {
    Add(Kind::kSetRun, 0);
    Step();
    Add(Kind::kSetRun, 1);
}

void Decoder::Action() {
    const bool isState = m_Bytes.OneIn(2);
    const int callback = m_Bytes.Below(kReadCallbacks);
    Operation action = isState ? StateAction(callback) : ReadAction(callback);
    Operation& operation = Add(Kind::kAction, isState ? 1 : 0, callback);
    if (!m_Bytes.OneIn(8)) {
        operation.action.push_back(action);
    }
}

// What a read callback may do; mostly it removes itself, from the port that is listened to.
Operation Decoder::ReadAction(int callback) {
    static constexpr Kind kKinds[] = {
        Kind::kRemoveRead, Kind::kRemoveRead, Kind::kRemoveRead, Kind::kAddRead, Kind::kEnumerate,
        Kind::kWrite,      Kind::kOpen,       Kind::kClose,      Kind::kSetRun,  Kind::kSetRun};
    constexpr int kThreadedKinds = 6;
    Operation action;
    action.kind = kKinds[m_Bytes.Below(m_Host == Host::kThreaded ? kThreadedKinds : 10)];
    if (action.kind == Kind::kWrite) {
        return WriteOperation();
    }
    if (action.kind == Kind::kSetRun) {
        return action;
    }
    action.number = m_Bytes.OneIn(4) ? PortNumber() : m_Listening;
    action.callback = m_Bytes.OneIn(4) ? m_Bytes.Below(kReadCallbacks) : callback;
    return action;
}

Operation Decoder::StateAction(int callback) {
    static constexpr Kind kKinds[] = {Kind::kRemoveState, Kind::kRemoveState, Kind::kAddState,
                                      Kind::kRelease,     Kind::kInit,        Kind::kOpen,
                                      Kind::kEnumerate,   Kind::kAddRead};
    Operation action;
    action.kind = m_Bytes.Pick(kKinds);
    action.text = kLogDirectory;
    action.number = PortNumber();
    action.callback = m_Bytes.OneIn(4) ? m_Bytes.Below(kStateCallbacks) : callback;
    return action;
}

} // namespace model

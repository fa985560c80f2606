// SPDX-License-Identifier: MIT
#include "tests/proof/model/model.h"

namespace model {

Model::Model(Start start, QuirkCounts& quirks) : m_Start(start), m_Quirks(quirks) {
    if (start == Start::kFull) {
        Adapter().IgnoreLengthBeforeRead();
    }
}

State Model::Snapshot() {
    CountState();
    return m_State;
}

// Of the host's functions: the arguments first, then whether there is a manager.
Outcome Model::Call(const Operation& operation) {
    const int port = operation.number;
    const bool isBadPort = port < 0;
    const bool isBadCallback = operation.callback == kNoCallback;
    const auto checked = [&](bool isBad, auto call) -> Outcome {
        if (isBad) {
            return {KOVAMGR_ERR_PARAM};
        }
        return {m_State.exists ? call() : int{KOVAMGR_ERR_NOT_INIT}};
    };
    switch (operation.kind) {
    case Kind::kInit:
        return {Init(operation)};
    case Kind::kRelease:
        return {Release()};
    case Kind::kOpen:
        return checked(isBadPort, [&] { return Open(port); });
    case Kind::kClose:
        return checked(isBadPort, [&] { return Close(port); });
    case Kind::kWrite:
        return Write(operation);
    case Kind::kPortState:
        return checked(isBadPort, [&]() -> int {
            return m_State.isInit ? KOVAMGR_PORT_STATE_READY : KOVAMGR_PORT_STATE_NOT_READY;
        });
    case Kind::kEnumerate:
        SoilRecord();
        return checked(operation.isNull, [&] { return Enumerate(Record()); });
    case Kind::kAddRead:
        return checked(isBadCallback || isBadPort,
                       [&] { return AddRead(port, operation.callback); });
    case Kind::kRemoveRead:
        return checked(isBadCallback || isBadPort,
                       [&] { return RemoveRead(port, operation.callback); });
    case Kind::kAddState:
        return checked(isBadCallback, [&] { return AddState(operation.callback); });
    case Kind::kRemoveState:
        return checked(isBadCallback, [&] { return RemoveState(operation.callback); });
    case Kind::kNotice:
        return {Notice(operation.number)};
    default:
        return m_State.exists ? CallInside(operation) : Outcome();
    }
}

Outcome Model::CallInside(const Operation& operation) {
    switch (operation.kind) {
    case Kind::kSweep:
        Sweep();
        return {};
    case Kind::kReadHandle:
        return ReadHandle(operation.number);
    case Kind::kReleaseDevice:
        if (!operation.isNull) {
            ReleaseDevice(operation.text);
        }
        return {};
    case Kind::kDeletePort:
        DeletePort(operation.number);
        return {};
    case Kind::kSetInit:
        m_State.isInit = operation.number != 0;
        return {};
    case Kind::kSetRun:
        m_State.isRunning = operation.number != 0;
        return {};
    default:
        return {};
    }
}

} // namespace model

// SPDX-License-Identifier: MIT
#include "tests/proof/model/subject.h"

#include <cstring>
#include <utility>

namespace model {
namespace {

// Callbacks that register one another could go on for ever; all subjects end it alike.
constexpr int kMostActs = 20;

constexpr int kSoil = 0xa5;

} // namespace

bool operator==(const Outcome& left, const Outcome& right) {
    return left.result == right.result && left.stored == right.stored && left.data == right.data;
}

std::string Describe(const Outcome& outcome) {
    const bool isStored = outcome.stored != Outcome::kUntouched;
    return std::to_string(outcome.result) +
           (isStored ? ", stored " + std::to_string(outcome.stored) : "") +
           (outcome.data.empty() ? "" : ", data " + Quoted(outcome.data));
}

Subject::Subject() : m_Record(std::make_unique<_KOVAMGR_DEVICEINFOLIST>()) {}

Outcome Subject::Do(const Operation& operation) {
    m_Acts = 0;
    if (!IsScript(operation)) {
        return Call(operation);
    }
    m_World.Apply(operation);
    Scripted();
    return {};
}

void Subject::OnRead(int callback, const void* data, int length) {
    const std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(length) + 1);
    m_World.Note("read callback " + std::to_string(callback) + " of " + std::to_string(length) +
                 ": " + bytes);
    Act(false, callback);
}

void Subject::OnState(int callback, int state) {
    m_World.Note("state callback " + std::to_string(callback) + ": " + std::to_string(state));
    Act(true, callback);
}

void Subject::Act(bool isState, int callback) {
    const Operation* const action = m_World.ActionOf(isState, callback);
    if (action == nullptr || ++m_Acts > kMostActs) {
        return;
    }
    const Outcome outcome = Call(*action);
    m_World.Note("  it did: " + Describe(*action) + ": " + Describe(outcome));
}

void Subject::SoilRecord() {
    std::memset(m_Record.get(), kSoil, sizeof *m_Record);
    m_bRecordUsed = true;
}

bool Subject::TakeIsRecordUsed() { return std::exchange(m_bRecordUsed, false); }

} // namespace model

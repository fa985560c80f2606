// SPDX-License-Identifier: MIT
#include "tests/proof/model/world.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace model {
namespace {

std::string Ended(int result) {
    return result == OS_ADAPT_OK ? "" : " = " + std::to_string(result);
}

bool IsZero(const _OS_ADAPT_DEVICEPORTLIST& list) {
    const char* const bytes = reinterpret_cast<const char*>(&list);
    return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, sizeof list - 1) == 0;
}

} // namespace

void World::Apply(const Operation& operation) {
    Lock lock(m_Mutex);
    switch (operation.kind) {
    case Kind::kTable:
        m_Table = operation.table;
        break;
    case Kind::kResult:
        m_Answers.at(static_cast<std::size_t>(operation.function)) = {operation.number,
                                                                      operation.times};
        break;
    case Kind::kNextHandle:
        m_NextHandle = operation;
        break;
    case Kind::kWriteCount:
        m_WriteCount = operation;
        break;
    case Kind::kData:
        m_Reads.push_back(operation.read);
        break;
    case Kind::kMissing:
        m_Missing = operation.number;
        break;
    case Kind::kAction:
        m_Actions.at(operation.number != 0).at(static_cast<std::size_t>(operation.callback)) =
            operation.action;
        break;
    default:
        break;
    }
}

int World::ResultOf(Function function) {
    Answer& answer = m_Answers.at(static_cast<std::size_t>(function));
    const int result = answer.result;
    if (answer.times > 0 && --answer.times == 0) {
        answer = {};
    }
    return result;
}

int World::Register() {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kRegister);
    m_Events.push_back("Register" + Ended(result));
    return result;
}

int World::UnRegister() {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kUnRegister);
    m_Events.push_back("UnRegister" + Ended(result));
    return result;
}

int World::Open(const char* portName, int* handle) {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kOpen);
    const int before = *handle;
    if (!m_NextHandle) {
        *handle = result == OS_ADAPT_OK ? ++m_LastHandle : before;
    } else if (!m_NextHandle->isNull) {
        *handle = m_NextHandle->number;
    }
    m_NextHandle.reset();
    m_Events.push_back("Open " + Quoted(portName) + " " + std::to_string(before) + " -> " +
                       std::to_string(*handle) + Ended(result));
    return result;
}

int World::Close(int handle) {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kClose);
    m_Events.push_back("Close " + std::to_string(handle) + Ended(result));
    return result;
}

int World::Write(int handle, const void* data, long length, long* written) {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kWrite);
    const std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(length));
    m_Events.push_back("Write " + std::to_string(handle) + " " + Quoted(bytes) + " from " +
                       std::to_string(*written) + Ended(result));
    if (!m_WriteCount.isNull) {
        *written = m_WriteCount.length.value_or(length);
    }
    return result;
}

int World::Read(int handle, void* buffer, long size, long* read) {
    Lock lock(m_Mutex);
    if (m_ReadsLeft && (*m_ReadsLeft)-- <= 0) {
        m_ReadsLeft = 0;
        *read = 0;
        return OS_ADAPT_OK;
    }
    const int result = ResultOf(Function::kRead);
    m_Events.push_back("Read " + std::to_string(handle) + " " + std::to_string(size) +
                       (m_bLengthNoted ? " from " + std::to_string(*read) : "") + Ended(result));
    TakeRead(buffer, size, read);
    return result;
}

// A failing read takes its answer as well: what it leaves behind must not matter.
void World::TakeRead(void* buffer, long size, long* read) {
    const ReadAnswer answer = m_Reads.empty() ? ReadAnswer() : m_Reads.front();
    if (!m_Reads.empty()) {
        m_Reads.pop_front();
    }
    const std::size_t count = std::min(answer.bytes.size(), static_cast<std::size_t>(size));
    std::memcpy(buffer, answer.bytes.data(), count);
    if (answer.isCountStored) {
        *read = answer.count.value_or(static_cast<long>(count));
    }
}

int World::Enum(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    Lock lock(m_Mutex);
    const int result = ResultOf(Function::kEnum);
    m_Events.push_back("Enum " + std::to_string(which) +
                       (IsZero(*list) ? "" : " into a record that is not zero") + Ended(result));
    Fill(*list, m_Table);
    return result;
}

void World::LimitReads(std::optional<long> count) {
    Lock lock(m_Mutex);
    m_ReadsLeft = count;
}

bool World::HasReadsLeft() {
    Lock lock(m_Mutex);
    return m_ReadsLeft.value_or(0) > 0;
}

bool World::StoresNextCount() {
    Lock lock(m_Mutex);
    return m_Reads.empty() || m_Reads.front().isCountStored;
}

void World::Note(const std::string& event) {
    Lock lock(m_Mutex);
    m_Events.push_back(event);
}

std::vector<std::string> World::TakeEvents() {
    Lock lock(m_Mutex);
    return std::exchange(m_Events, {});
}

const Operation* World::ActionOf(bool isState, int callback) const {
    const auto& action = m_Actions.at(isState).at(static_cast<std::size_t>(callback));
    return action.empty() ? nullptr : &action.front();
}

} // namespace model

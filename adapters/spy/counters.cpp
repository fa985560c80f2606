// SPDX-License-Identifier: MIT
#include "adapters/spy/counters.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

// Others read the file at any time: each counter is stored in one piece.
void Increase(uint64_t& counter, uint64_t by) {
    __atomic_fetch_add(&counter, by, __ATOMIC_RELAXED);
}

void Raise(uint64_t& counter, uint64_t value) {
    uint64_t seen = __atomic_load_n(&counter, __ATOMIC_RELAXED);
    while (seen < value && !__atomic_compare_exchange_n(&counter, &seen, value, true,
                                                        __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
    }
}

void CountCall(OSADAPT_SPY_PORT& record, const Call& call) {
    OSADAPT_SPY_CALLS& calls = record.stCalls[call.kind];
    const auto took = static_cast<uint64_t>(std::max<int64_t>(0, call.endNs - call.startNs));
    Increase(calls.nCalls, 1);
    Increase(calls.nTotalNs, took);
    Raise(calls.nLongestNs, took);
    if (!call.HasSucceeded()) {
        Increase(calls.nFailures, 1);
    }
}

void CountBytes(OSADAPT_SPY_PORT& record, const Call& call) {
    const size_t moved = call.BytesMoved();
    if (call.kind == OSADAPT_SPY_READ && moved != 0) {
        Increase(record.nBytesIn, moved);
    } else if (call.kind == OSADAPT_SPY_WRITE && call.HasSucceeded()) {
        Increase(record.nBytesOut, moved);
        if (call.length > 0 && moved < static_cast<size_t>(call.length)) {
            Increase(record.nShortWrites, 1);
        }
    }
}

bool HasName(const OSADAPT_SPY_PORT& record) {
    return __atomic_load_n(&record.szPortName[0], __ATOMIC_ACQUIRE) != '\0';
}

// Its first byte comes last: whoever sees a name sees all of it.
void NamePort(OSADAPT_SPY_PORT& record, const std::string& name) {
    const size_t size = std::min(name.size(), sizeof record.szPortName - 1);
    std::memcpy(record.szPortName + 1, name.data() + 1, size - 1); // zeroed before
    __atomic_store_n(&record.szPortName[0], name[0], __ATOMIC_RELEASE);
}

void RaiseCount(uint32_t& count, size_t value) {
    if (__atomic_load_n(&count, __ATOMIC_RELAXED) < value) {
        __atomic_store_n(&count, static_cast<uint32_t>(value), __ATOMIC_RELEASE);
    }
}

} // namespace

void Counters::Unmap::operator()(OSADAPT_SPY_COUNTERS* file) const { munmap(file, sizeof *file); }

Counters::Counters(std::string adapterFile) : m_AdapterFile(std::move(adapterFile)) {}

void Counters::Start() {
    const CancelShield shield;
    const Lock lock(m_Mutex);
    if (m_File != nullptr || m_HasFailed) {
        return;
    }
    try {
        Begin();
    } catch (const std::exception& error) {
        m_HasFailed = true;
        m_Directory.reset();
        LogError(std::string("no counters are kept: ") + error.what());
    }
}

void Counters::Begin() {
    m_Directory = std::make_unique<CounterDirectory>();
    const File file = MakeFile();
    file->nVersion = OSADAPT_SPY_VERSION;
    file->nSize = sizeof *file;
    file->nProcess = getpid();
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    file->nStartedNs =
        static_cast<uint64_t>(now.tv_sec) * 1000000000 + static_cast<uint64_t>(now.tv_nsec);
    m_AdapterFile.copy(file->szAdapter, sizeof file->szAdapter - 1);
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(file->szMagic, OSADAPT_SPY_MAGIC, sizeof file->szMagic);
    m_File = file;
}

// The space is taken now: a full file system must not end the host later.
Counters::File Counters::MakeFile() {
    const UniqueFd file = m_Directory->MakeFile();
    constexpr size_t kSize = sizeof(OSADAPT_SPY_COUNTERS);
    if (const int error = posix_fallocate(file.Get(), 0, kSize); error != 0) {
        throw std::runtime_error("no space for the file: " + ErrnoText(error));
    }
    void* const memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("the file cannot be mapped: " + ErrnoText(errno));
    }
    return {static_cast<OSADAPT_SPY_COUNTERS*>(memory), Unmap()};
}

Counters::File Counters::Current() const {
    const Lock lock(m_Mutex);
    return m_File;
}

void Counters::Add(const Call& call) {
    const File file = Current();
    if (file == nullptr) {
        return;
    }
    OSADAPT_SPY_PORT& record = call.port == nullptr ? file->stAdapter : RecordOf(*file, *call.port);
    CountCall(record, call);
    CountBytes(record, call);
}

OSADAPT_SPY_PORT& Counters::RecordOf(OSADAPT_SPY_COUNTERS& file, const KnownPort& port) {
    if (port.number < OSADAPT_SPY_MAX_PORTS && HasName(file.stPort[port.number])) {
        return file.stPort[port.number];
    }
    const Lock lock(m_Mutex);
    if (port.number >= OSADAPT_SPY_MAX_PORTS) {
        RaiseCount(file.nPortsLeftOut, port.number - OSADAPT_SPY_MAX_PORTS + 1);
    }
    if (port.number >= OSADAPT_SPY_MAX_PORTS || port.name.empty()) {
        return file.stAdapter;
    }
    NamePort(file.stPort[port.number], port.name);
    RaiseCount(file.nPortCount, port.number + 1);
    return file.stPort[port.number];
}

void Counters::End() {
    const CancelShield shield;
    const Lock lock(m_Mutex);
    m_File.reset();
    m_Directory.reset();
    m_HasFailed = false;
}

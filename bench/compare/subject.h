// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_COMPARE_SUBJECT_H
#define KOVASMGR_BENCH_COMPARE_SUBJECT_H

#include <atomic>
#include <cstddef>
#include <memory>

/// A library at work on pseudo-terminals, in the way that its own manual recommends. Each program
/// of the comparison has its own; all are measured by the same code.
///
/// Threads: the main thread, except FarEnd.
class Subject {
  public:
    /// Where what arrives is handed to; ports count from 0.
    using Sink = void (*)(size_t port, const void* data, size_t length);

    Subject() = default;
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// The far end's descriptor, in non-blocking mode.
    virtual int FarEnd(size_t port) const = 0;

    /// Writes to a port, until the kernel has it all.
    virtual void Write(size_t port, const void* data, size_t length) = 0;

    /// Delivers what arrives until the flag is set and, after that, one more byte has come to port
    /// 0. A library with a thread of its own may do it there.
    virtual void Run(const std::atomic<bool>& isEnding) = 0;

    /// Lists what is attached.
    /// @return how many ports, or -1: the library does not do that
    virtual long Enumerate() { return -1; }
};

/// With so many ports open. At most 64 when anything is to be delivered.
std::unique_ptr<Subject> MakeSubject(size_t ports, Subject::Sink sink);

#endif

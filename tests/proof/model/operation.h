// SPDX-License-Identifier: MIT
//
// What can happen to a manager: calls of the host, notices, sweeps, and what the adapter is going to
// answer. A sequence of these is run on the real manager and on its model alike.
#ifndef KOVASMGR_TESTS_PROOF_MODEL_OPERATION_H
#define KOVASMGR_TESTS_PROOF_MODEL_OPERATION_H

#include <optional>
#include <string>
#include <vector>

#include "OSAdapt.h"

namespace model {

/// What an adapter reports, however wrong: a text that fills its array has no terminator there.
struct PortEntry {
    std::string name;
    int id = 0;
};
struct DeviceEntry {
    std::string name;
    std::string text;
    std::vector<PortEntry> ports;
    std::optional<int> count; ///< reported in place of the true one
};
struct Table {
    std::vector<DeviceEntry> devices;
    std::optional<int> count;
};

/// One answer of the adapter's read.
struct ReadAnswer {
    std::string bytes;
    std::optional<long> count; ///< reported in place of the true one
    bool isCountStored = true;
};

enum class Kind {
    // The host's functions.
    kInit,
    kRelease,
    kOpen,
    kClose,
    kWrite,
    kPortState,
    kEnumerate,
    kAddRead,
    kRemoveRead,
    kAddState,
    kRemoveState,
    // What reaches the manager in other ways.
    kNotice,
    kSweep,
    kReadHandle,
    kReleaseDevice,
    kDeletePort,
    // What the adapter will answer.
    kTable,
    kResult,
    kNextHandle,
    kWriteCount,
    kData,
    kMissing,
    // What a callback will do when it is called.
    kAction,
    // The manager's two flags.
    kSetInit,
    kSetRun,
};

/// The adapter's functions, in the order in which they are looked up.
enum class Function { kRegister, kUnRegister, kOpen, kClose, kWrite, kRead, kEnum };
constexpr int kFunctions = 7;

constexpr char kLogDirectory[] = "log"; ///< the one directory that exists

constexpr int kReadCallbacks = 4;   ///< different read callbacks that a host registers
constexpr int kStateCallbacks = 4;  ///< and device-state callbacks
constexpr int kReadHandleSize = 16; ///< bytes of room in kReadHandle
constexpr int kNoCallback = -1;     ///< a null pointer in place of one

struct Operation {
    Kind kind = Kind::kSweep;
    int number = 0;   ///< port, status, handle, flag, result ...
    int callback = 0; ///< which one, or kNoCallback
    int times = 0;    ///< kResult: how many calls; 0 for all to come
    Function function = Function::kOpen;
    std::string text; ///< data, device, kLogDirectory or another directory
    std::optional<long> length;
    bool isNull = false;       ///< the data or list is a null pointer
    bool isResultNull = false; ///< kWrite: the result pointer is null
    Table table;
    ReadAnswer read;
    std::vector<Operation> action; ///< kAction: one at most
};

using Sequence = std::vector<Operation>;

/// Whether it only prepares what the adapter or a callback does later.
bool IsScript(const Operation& operation);

/// In words, on one line; a table on one line a device.
std::string Describe(const Operation& operation);
std::string Describe(const Sequence& sequence);

/// A text in quotes, cut where it is long, with what is not printable as \xhh.
std::string Quoted(const std::string& text);

} // namespace model

#endif

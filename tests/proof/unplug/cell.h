// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_CELL_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_CELL_H

#include <iosfwd>
#include <string>
#include <vector>

/// What the host does with the port that is pulled out.
enum class Operation {
    kOpen,
    kWrite,
    kReceive, ///< its read callback runs
    kClose,
    kRegister, ///< a read callback
    kUnRegister,
    kRegisterState, ///< a device-state callback
    kUnRegisterState,
    kEnumerate,
    kRelease
};

/// When it does so.
enum class Moment {
    kBefore,         ///< it has ended when the notice comes
    kUnderWay,       ///< it is under way when the notice comes
    kDuringRescan,   ///< it comes while the rescan is in the adapter's enumeration
    kDuringCallback, ///< it comes while the host's callback is told of the pull-out
    kAfter           ///< the notice has ended
};

/// What is pulled out.
enum class Gone {
    kDevice, ///< with all its ports
    kPort    ///< one port of a device that stays
};

struct Cell {
    Operation operation;
    Moment moment;
    Gone gone;

    /// Whether the port is still there for the operation.
    bool HasPort() const { return moment == Moment::kBefore || moment == Moment::kUnderWay; }

    /// Whether it is chance, without gates, what comes first.
    bool IsRace() const { return moment == Moment::kUnderWay || moment == Moment::kDuringRescan; }
};

/// "OpenDuringTheRescanOfThePullOutOfADevice"
std::string NameOf(const Cell& cell);
std::ostream& operator<<(std::ostream& out, const Cell& cell);

/// Every operation at each of these moments, with a device and with a port.
std::vector<Cell> CellsAt(const std::vector<Moment>& moments);

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_QUIRKS_H
#define KOVASMGR_TESTS_PROOF_MODEL_QUIRKS_H

#include <array>
#include <cstddef>

namespace model {

/// Kept oddities that a sequence may run into. The model counts them, so that a run can show that it
/// met them all.
enum class Quirk {
    kNumberRepeated,        ///< a fresh number that a port has already: the single pass missed it
    kNumberSkipped,         ///< a taken number was skipped
    kProposedNumberTaken,   ///< the adapter proposed a number that a port has already
    kListOutOfOrder,        ///< numbers in the prepared list do not ascend
    kNumberTwice,           ///< two prepared ports of one number
    kDevicesMerged,         ///< two entries of one name went into one record
    kKnownElsewhere,        ///< a port was known under another device, and stayed there
    kCountBeyondArray,      ///< a count above 64 or 16
    kCountNegative,         ///< a count below 0
    kTextCut,               ///< a text without a terminator
    kSwapUnnoticed,         ///< the same count, other ports: taken as unchanged
    kRemovedUnclosed,       ///< a vanished port was open, and was removed without a close
    kRestartOnNextDevice,   ///< the removal scan went on with the record that moved up
    kNeighbourDropped,      ///< and dropped a port of it, which was still attached
    kOtherTwinDeleted,      ///< the port deleted was another one of the same number
    kListsApart,            ///< a prepared port without a copy in the tree, or the other way round
    kCloseFailedAtRemoval,  ///< the port was removed all the same
    kFailedOpenLeftHandle,  ///< an open failed, and the port counts as open
    kOpenedWithoutHandle,   ///< an open succeeded, and the port counts as closed
    kCloseFailed,           ///< and the port stayed open
    kLengthRepeated,        ///< a read that stored no count delivered as many as the one before
    kLengthCut,             ///< a read reported more than 4,096 bytes
    kStateCallbackSkipped,  ///< a callback removed itself and cost its successor the notice
    kReadCallbackRemoved,   ///< a read callback removed itself, and its successor was called
    kStoppedBetweenReaders, ///< the run flag was cleared between two callbacks of a port
    kReleaseFromCallback,   ///< it wrote an error and did nothing
    kCount
};

constexpr std::size_t kQuirks = static_cast<std::size_t>(Quirk::kCount);

using QuirkCounts = std::array<long, kQuirks>;

/// As in the name of a figure: "number_repeated".
const char* NameOf(Quirk quirk);

inline void Note(QuirkCounts& counts, Quirk quirk) { ++counts[static_cast<std::size_t>(quirk)]; }

} // namespace model

#endif

// SPDX-License-Identifier: MIT
#include "tests/proof/model/quirks.h"

namespace model {

const char* NameOf(Quirk quirk) {
    static constexpr const char* kNames[] = {
        "number_repeated",
        "number_skipped",
        "proposed_number_taken",
        "list_out_of_order",
        "number_twice",
        "devices_merged",
        "known_elsewhere",
        "count_beyond_array",
        "count_negative",
        "text_cut",
        "swap_unnoticed",
        "removed_unclosed",
        "restart_on_next_device",
        "neighbour_dropped",
        "other_twin_deleted",
        "lists_apart",
        "close_failed_at_removal",
        "failed_open_left_handle",
        "opened_without_handle",
        "close_failed",
        "length_repeated",
        "length_cut",
        "state_callback_skipped",
        "read_callback_removed",
        "stopped_between_readers",
        "release_from_callback",
    };
    static_assert(sizeof kNames / sizeof *kNames == kQuirks);
    return kNames[static_cast<std::size_t>(quirk)];
}

} // namespace model

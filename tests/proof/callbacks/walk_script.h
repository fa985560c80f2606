// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_WALK_SCRIPT_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_WALK_SCRIPT_H

#include <array>
#include <random>
#include <vector>

/// How callbacks, numbered from 0, change the list they stand in while it is walked, and what
/// should come of it.
class WalkScript {
  public:
    static constexpr int kCallbacks = 8;
    using List = std::vector<int>;

    struct Change {
        bool isAddition;
        int callback;
    };

    /// What each callback changes, every time it is called.
    std::array<std::vector<Change>, kCallbacks> changes;

    /// Up to three changes for some of the callbacks.
    static WalkScript Random(std::mt19937& random);

    /// Each callback of the list removes itself.
    static WalkScript OfSelfRemovalBy(const List& callbacks);

    /// The rule of read callbacks: the walk goes on at the same place when another callback stands
    /// there now, as often as there were callbacks at first. Returns the calls.
    List ReadWalk(List& list) const;

    /// The rule of device-state callbacks: by index, come what may. Returns the calls.
    List StateWalk(List& list) const;

    static void Apply(const Change& change, List& list);

  private:
    void ApplyAll(int callback, List& list) const;
};

#endif

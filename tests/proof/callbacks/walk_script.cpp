// SPDX-License-Identifier: MIT
#include "tests/proof/callbacks/walk_script.h"

#include <algorithm>

WalkScript WalkScript::Random(std::mt19937& random) {
    const auto below = [&](int limit) {
        return std::uniform_int_distribution<int>(0, limit - 1)(random);
    };
    WalkScript script;
    for (auto& changes : script.changes) {
        for (int left = below(4); left > 0 && below(3) != 0; --left) {
            changes.push_back({below(2) == 0, below(kCallbacks)});
        }
    }
    return script;
}

WalkScript WalkScript::OfSelfRemovalBy(const List& callbacks) {
    WalkScript script;
    for (const int callback : callbacks) {
        script.changes.at(static_cast<std::size_t>(callback)) = {{false, callback}};
    }
    return script;
}

void WalkScript::Apply(const Change& change, List& list) {
    const auto found = std::find(list.begin(), list.end(), change.callback);
    if (change.isAddition && found == list.end()) {
        list.push_back(change.callback);
    } else if (!change.isAddition && found != list.end()) {
        list.erase(found);
    }
}

void WalkScript::ApplyAll(int callback, List& list) const {
    for (const Change& change : changes.at(static_cast<std::size_t>(callback))) {
        Apply(change, list);
    }
}

WalkScript::List WalkScript::ReadWalk(List& list) const {
    List calls;
    std::size_t stays = list.size();
    std::size_t place = 0;
    while (place < list.size()) {
        const int callback = list[place];
        calls.push_back(callback);
        ApplyAll(callback, list);
        const bool isAnother = place < list.size() && list[place] != callback;
        if (isAnother && stays > 0) {
            --stays;
        } else {
            ++place;
        }
    }
    return calls;
}

WalkScript::List WalkScript::StateWalk(List& list) const {
    List calls;
    for (std::size_t place = 0; place < list.size(); ++place) {
        const int callback = list[place];
        calls.push_back(callback);
        ApplyAll(callback, list);
    }
    return calls;
}

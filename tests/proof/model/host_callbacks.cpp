// SPDX-License-Identifier: MIT
#include "tests/proof/model/host_callbacks.h"

#include <algorithm>
#include <array>

namespace model {
namespace {

Subject* s_Called = nullptr;

template <int number> void OnRead(void* data, int length) { Called().OnRead(number, data, length); }

template <int number> void OnState(_KOVAMGR_DEV_STATE_TYPE_ state) {
    Called().OnState(number, static_cast<int>(state));
}

constexpr std::array<KOVAMGR_READ_CALLBACK, kReadCallbacks> kRead = {OnRead<0>, OnRead<1>,
                                                                     OnRead<2>, OnRead<3>};
constexpr std::array<KOVAMGR_DEV_STATE_CALLBACK, kStateCallbacks> kState = {OnState<0>, OnState<1>,
                                                                            OnState<2>, OnState<3>};

template <typename Callback, std::size_t size>
std::vector<int> Numbers(const std::array<Callback, size>& all,
                         const std::vector<Callback>& callbacks) {
    std::vector<int> numbers;
    for (const Callback callback : callbacks) {
        const auto found = std::find(all.begin(), all.end(), callback);
        numbers.push_back(found == all.end() ? -2 : static_cast<int>(found - all.begin()));
    }
    return numbers;
}

} // namespace

KOVAMGR_READ_CALLBACK ReadCallback(int callback) {
    return callback == kNoCallback ? nullptr : kRead.at(static_cast<std::size_t>(callback));
}

KOVAMGR_DEV_STATE_CALLBACK StateCallback(int callback) {
    return callback == kNoCallback ? nullptr : kState.at(static_cast<std::size_t>(callback));
}

std::vector<int> NumbersOf(const std::vector<KOVAMGR_READ_CALLBACK>& callbacks) {
    return Numbers(kRead, callbacks);
}

std::vector<int> NumbersOf(const std::vector<KOVAMGR_DEV_STATE_CALLBACK>& callbacks) {
    return Numbers(kState, callbacks);
}

void SetCalled(Subject* subject) { s_Called = subject; }

Subject& Called() { return *s_Called; }

} // namespace model

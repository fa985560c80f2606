// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_PORT_CALLBACKS_H
#define KOVASMGR_BENCH_PORT_CALLBACKS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "KOVASMgr.h"

/// Read callbacks that know their port, which the library's do not tell: one function for each of
/// the first 64 ports, which count from 0 for the sink.
class PortCallbacks {
  public:
    using Sink = void (*)(size_t port, const void* data, size_t length);

    static constexpr size_t kMost = 64;

    /// At the ports with the identifiers 1 onwards.
    static void Register(size_t ports, Sink sink) {
        s_Sink = sink;
        const auto all = All(std::make_index_sequence<kMost>());
        for (size_t port = 0; port < std::min(ports, kMost); ++port) {
            KOVAMGR_RegisterCommDataReadCallback(all[port], static_cast<int>(port) + 1);
        }
    }

  private:
    template <size_t port> static void Call(void* data, int length) {
        s_Sink(port, data, static_cast<size_t>(length));
    }

    template <size_t... ports>
    static std::array<KOVAMGR_READ_CALLBACK, kMost> All(std::index_sequence<ports...>) {
        return {&Call<ports>...};
    }

    static inline Sink s_Sink = nullptr;
};

#endif

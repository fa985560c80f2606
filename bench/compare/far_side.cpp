// SPDX-License-Identifier: MIT
#include "bench/compare/far_side.h"

#include <unistd.h>

#include <exception>
#include <thread>

void RunAgainst(Subject& subject, const std::function<void()>& farEnds) {
    std::atomic<bool> isEnding{false};
    std::exception_ptr thrown;
    std::thread other([&] {
        try {
            farEnds();
        } catch (...) {
            thrown = std::current_exception();
        }
        isEnding = true;
        while (write(subject.FarEnd(0), "", 1) != 1) { // what waits for data goes on
            usleep(1000);
        }
    });
    subject.Run(isEnding);
    other.join();
    if (thrown) {
        std::rethrow_exception(thrown);
    }
}

// SPDX-License-Identifier: MIT
// follow.c in C++: what came and what went instead of a bare notice.
//
//     follow COUNT    COUNT: how often it is connected before the program ends
#include <KOVASMgr.hpp>

#include <cstdlib>
#include <future>
#include <iostream>

namespace {

class Follower {
  public:
    Follower(const kovasmgr::Library& library, long count)
        : m_Library(library), m_Rest(count),
          m_Watch(library.WatchDevices([this](const kovasmgr::Changes& changes) { See(changes); },
                                       kovasmgr::Snapshot())) {} // all that is there has just come

    void Wait() { m_IsDone.get_future().wait(); }

  private:
    static constexpr const char* kName = "virtual-sensor-0";

    // Once while m_Watch is made, then on the notice thread; never twice at a time.
    void See(const kovasmgr::Changes& changes) {
        if (kovasmgr::Snapshot{changes.went, 0}.FindPort(kName)) {
            std::cout << "gone" << std::endl;
        }
        if (const auto port = kovasmgr::Snapshot{changes.came, 0}.FindPort(kName)) {
            Connect(port->id);
        }
    }

    // Prepared first: the receiver finds m_Port where it belongs.
    void Connect(int id) {
        m_Port = m_Library.Prepare(id, [](kovasmgr::ByteView) {});
        if (!m_Port.Open()) {
            std::cout << "connected" << std::endl;
            if (--m_Rest == 0) {
                m_IsDone.set_value();
            }
        }
    }

    const kovasmgr::Library& m_Library;
    long m_Rest;
    std::promise<void> m_IsDone;
    kovasmgr::Port m_Port;
    kovasmgr::Watch m_Watch; // the last member: it ends first, and waits for See
};

} // namespace

int main(int argc, char** argv) {
    try {
        const kovasmgr::Library library(".");
        Follower(library, argc == 2 ? std::strtol(argv[1], nullptr, 10) : 1).Wait();
    } catch (const std::exception& error) {
        std::cerr << "follow: " << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}

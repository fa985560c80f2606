// SPDX-License-Identifier: MIT
//
// A host that does what its arguments say, one after the other, each of them one argument:
//
//     open PORT            opens it, again and again until it opens; waits until it is listed
//     ask PORT TEXT WORD   sends the text and waits for the word behind it
//     send PORT COUNT      sends so many bytes, all of them
//     refused PORT TEXT    sends the text, which must fail
//     receive PORT COUNT   waits until so many bytes have come
//     close PORT           closes it
//     gone PORT            waits until it is not listed
//     listed DEVICES PORTS waits until so many are listed
//     until SECONDS        waits until the scenario's time is so late
//     end                  waits until the scenario has ended
//
// TEXT and WORD have no blanks; \r and \n are what they are in C. At the end it prints what each
// port has received, a line each. Nothing that it does depends on how fast it is.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <sstream>
#include <stdexcept>

#include "KOVASMgr.h"
#include "tests/adapters/control_client.h"
#include "tests/harness/wait_until.h"
#include "tests/simulator/host_ports.h"

namespace {

constexpr std::chrono::seconds kBound{60};

void Check(bool isTrue, const std::string& what) {
    if (!isTrue) {
        throw std::runtime_error("not so: " + what);
    }
}

void WaitFor(const std::function<bool()>& condition, const std::string& what) {
    Check(WaitUntil(condition, kBound), what);
}

std::string Unescaped(std::string text) {
    for (const auto& [written, meant] : {std::pair{"\\r", "\r"}, std::pair{"\\n", "\n"}}) {
        for (size_t at = 0; (at = text.find(written)) != std::string::npos;) {
            text.replace(at, 2, meant);
        }
    }
    return text;
}

void Open(const std::string& name) {
    WaitFor([&] { return PortNumber(name) >= 0; }, name + " is listed");
    Check(Listen(name), name + " has a callback");
    // Each try is a call that the scenario counts, so nothing else may end in between.
    WaitFor([&] { return KOVAMGR_Open(PortNumber(name)) == KOVAMGR_OK; }, name + " opens");
}

/// @return how many bytes were taken; -1 when the write failed
int Write(const std::string& name, const std::string& bytes) {
    long reason = 0;
    const int count =
        KOVAMGR_Write(PortNumber(name), bytes.data(), static_cast<long>(bytes.size()), 0, &reason);
    return count > static_cast<int>(bytes.size()) ? -1 : count;
}

void SendAll(const std::string& name, const std::string& bytes) {
    for (size_t sent = 0; sent < bytes.size();) {
        const int count = Write(name, bytes.substr(sent));
        Check(count >= 0, name + " takes bytes");
        sent += static_cast<size_t>(count);
    }
}

void Ask(const std::string& name, const std::string& text, const std::string& word) {
    const size_t before = Received(name).size();
    SendAll(name, text);
    WaitFor([&] { return Received(name).find(word, before) != std::string::npos; },
            name + " answers " + word);
}

// Lines of a name and a value.
std::string Status(const std::string& wanted) {
    std::istringstream words(ControlClient(std::getenv("KOVASMGR_VIRTUAL_DIR")).Ask("status"));
    std::string name;
    std::string value;
    while (words >> name >> value && name != wanted) {
    }
    return value;
}

void Do(const std::string& step) {
    std::istringstream words(step);
    std::string verb;
    std::string name;
    std::string text;
    std::string more;
    words >> verb >> name >> text >> more;
    if (verb == "open") {
        Open(name);
    } else if (verb == "ask") {
        Ask(name, Unescaped(text), Unescaped(more));
    } else if (verb == "send") {
        SendAll(name, std::string(std::stoul(text), 'x'));
    } else if (verb == "refused") {
        Check(Write(name, Unescaped(text)) < 0, name + " takes nothing");
    } else if (verb == "receive") {
        WaitFor([&] { return Received(name).size() >= std::stoul(text); }, name + " receives");
    } else if (verb == "close") {
        Check(KOVAMGR_Close(PortNumber(name)) == KOVAMGR_OK, name + " closes");
    } else if (verb == "gone") {
        WaitFor([&] { return PortNumber(name) < 0; }, name + " is gone");
    } else if (verb == "listed") {
        WaitFor([&] { return Listed() == std::pair{std::stoul(name), std::stoul(text)}; }, step);
    } else if (verb == "until") {
        WaitFor([&] { return std::stod(Status("time")) >= std::stod(name); }, step);
    } else {
        Check(verb == "end", "'" + step + "' is a step");
        WaitFor([] { return Status("state") == "ended"; }, "the scenario ends");
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        Check(KOVAMGR_Init(".") == KOVAMGR_OK, "the library is initialised");
        for (int i = 1; i < argc; ++i) {
            Do(argv[i]);
        }
        KOVAMGR_Release();
        PrintReceived();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plan_host: %s\n", error.what());
        KOVAMGR_Release();
        return EXIT_FAILURE;
    }
}

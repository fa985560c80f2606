// SPDX-License-Identifier: MIT
//
// What lands in the log file: names of ports, which are taken as formats without arguments, and
// messages of any length and content.
//
// Input: what to do (Byte), how often the text is there (Byte), the text.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "KOVASMgrLog.h"
#include "log/process_log.h"
#include "tests/harness/manager_probe.h"
#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/fuzz/listed_adapter.h"

namespace {

constexpr size_t kMostMessage = KOVASMGR_LOG_MESSAGE_SIZE - 1;
constexpr int kLogFile = 100; // a descriptor that nothing else has
constexpr const char* kLogPath = "/proc/self/fd/100";

std::string Logged() {
    const off_t length = lseek(kLogFile, 0, SEEK_END);
    std::string text(static_cast<size_t>(length), '\0');
    Demand(pread(kLogFile, text.data(), text.size(), 0) == length, "the log can be read");
    return text;
}

void EmptyLog() { Demand(ftruncate(kLogFile, 0) == 0, "the log can be emptied"); }

/// Whether a text begins with "[2026-01-31 23:59:59:123] ".
bool HasTime(const std::string& text) {
    static const std::string kForm = "[0000-00-00 00:00:00:000] ";
    for (size_t i = 0; i < kForm.size(); ++i) {
        const char c = i < text.size() ? text[i] : '\0';
        if (kForm[i] == '0' ? c < '0' || c > '9' : c != kForm[i]) {
            return false;
        }
    }
    return true;
}

/// Takes one line from the front of what was logged: its time, and then nothing but this.
void TakeLine(std::string& logged, const std::string& line) {
    constexpr size_t kTimeLength = 26;
    Demand(HasTime(logged), "a line begins with its time");
    logged.erase(0, kTimeLength);
    Demand(logged.compare(0, line.size() + 1, line + "\n") == 0,
           "a line is its level and its text");
    logged.erase(0, line.size() + 1);
}

/// What printf makes of a text that has no arguments: of two signs one, and all else as it is.
std::string WithoutArguments(const std::string& format) {
    std::string text;
    size_t signs = 0;
    for (const char c : format + '\0') {
        if (c == '%') {
            ++signs;
            continue;
        }
        text.append((signs + 1) / 2, '%');
        text += c;
        signs = 0;
    }
    text.pop_back();
    return text;
}

std::string Repeated(const std::string& text, size_t times) {
    std::string repeated;
    for (size_t i = 0; i < times && repeated.size() < 4 * kMostMessage; ++i) {
        repeated += text;
    }
    return repeated;
}

// An adapter reports a port of this name.
void LogPortName(const std::string& name) {
    ListedAdapter::Bind();
    ListedAdapter::Fill(1, 1);
    char(&listed)[OS_ADAPT_PORT_NAME_SIZE] = ListedAdapter::List().stDevice[0].stPort[0].szPortName;
    std::memset(listed, 0, sizeof listed);
    name.copy(listed, sizeof listed);
    CKOVASMgrPort manager;
    ManagerProbe::OSAdaptLib(manager) = new JLibrary("/nowhere/OSAdapt"); // the manager's own
    manager.DetermineAddPort();

    std::string logged = Logged();
    const std::string text(name.c_str(), strnlen(name.c_str(), OS_ADAPT_PORT_NAME_SIZE - 1));
    TakeLine(logged, "INFO:Enter DetermineAddPort()");
    TakeLine(logged, "INFO:DetermineAddPort() Enum Device Count=1 !");
    TakeLine(logged, "INFO:DetermineAddPort() Port of Device Count=1 !");
    TakeLine(logged, "INFO:" + WithoutArguments(text));
    TakeLine(logged, "INFO:Leave DetermineAddPort()");
    Demand(logged.empty(), "a port's name is one line");
}

void CheckMessage(int written, const std::string& line) {
    Demand(written == 1, "a line is written");
    std::string logged = Logged();
    TakeLine(logged, line);
    Demand(logged.empty(), "a call is one line");
}

std::string Cut(const std::string& message) { return message.substr(0, kMostMessage); }

void LogMessage(int what, const std::string& text) {
    const char* const message = text.c_str(); // up to the first zero byte
    switch (what) {
    case 0:
        return CheckMessage(INFO_LOG("%s", message), "INFO:" + Cut(message));
    case 1:
        return CheckMessage(ERRO_LOG("%s", message), "ERRO:" + Cut(message));
    case 2:
        return CheckMessage(FATAL_LOG("%s", message), "FATAL:" + Cut(message));
    case 3:
        return CheckMessage(INFO_LOG("%d%%%s|%s", -7, message, message),
                            "INFO:" + Cut(std::string("-7%") + message + "|" + message));
    default: // at any level and length
        return CheckMessage(
            g_INFO_LOG->PrintLog(static_cast<LOG_LEVEL>(LOG_LEVEL_FATAL + what), message), message);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const int file = memfd_create("log", 0);
    Demand(file != -1 && dup2(file, kLogFile) == kLogFile, "there is memory for the log");
    close(file);
    Demand(INIT_LOG(kLogPath, true) == 1, "the log is opened");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint8_t what = input.Byte();
    const size_t times = input.Byte() + size_t{1};
    const std::string text = input.Rest();
    EmptyLog();
    if (what % 2 == 0) {
        LogPortName(text);
    } else {
        LogMessage(what / 2 % 6, Repeated(text, times));
    }
    return 0;
}

// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

void ExpectSuccess(const std::string& call, int result) {
    if (result != OS_ADAPT_OK) {
        throw Broken(call + " returned " + std::to_string(result));
    }
}

std::string On(const std::string& call, const std::string& portName) {
    return "OS_ADAPT_" + call + " on '" + portName + "'";
}

void UsePort(Trial& trial, const std::string& name) {
    const Subject& adapter = trial.Adapter();
    trial.Step("opening '" + name + "'");
    int handle = OS_ADAPT_NO_HANDLE;
    ExpectSuccess(On("OpenPort", name), adapter.Open(name.c_str(), &handle));
    if (handle == OS_ADAPT_NO_HANDLE) {
        return; // R12a
    }
    trial.Step("writing to '" + name + "'");
    long written = 0;
    ExpectSuccess(On("Write", name), adapter.Write(handle, kLineEnd, sizeof kLineEnd, &written));
    trial.Step("reading from '" + name + "'");
    char buffer[8192]; // twice what is asked for, see R9c
    long count = 0;
    ExpectSuccess(On("Read", name), adapter.Read(handle, buffer, 4096, &count));
    trial.Step("closing '" + name + "'");
    ExpectSuccess(On("ClosePort", name), adapter.Close(handle));
}

void GiveNulls(Trial& trial, int handle) {
    const Subject& adapter = trial.Adapter();
    const std::string on = handle == OS_ADAPT_NO_HANDLE ? "" : ", on an open port";
    char buffer[16] = "";
    long count = 0;
    trial.Step("OS_ADAPT_Write without data" + on);
    adapter.Write(handle, nullptr, 2, &count);
    trial.Step("OS_ADAPT_Write without a place for the count" + on);
    adapter.Write(handle, kLineEnd, sizeof kLineEnd, nullptr);
    trial.Step("OS_ADAPT_Read without a buffer" + on);
    adapter.Read(handle, nullptr, sizeof buffer, &count);
    trial.Step("OS_ADAPT_Read without a place for the count" + on);
    adapter.Read(handle, buffer, sizeof buffer, nullptr);
}

void GiveNullNames(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    int handle = OS_ADAPT_NO_HANDLE;
    trial.Step("OS_ADAPT_OpenPort without a name");
    adapter.Open(nullptr, &handle);
    trial.Step("OS_ADAPT_OpenPort without a place for the handle");
    adapter.Open("there is no such port", nullptr);
    trial.Step("OS_ADAPT_EnumDevicePortInfo without a list");
    adapter.Enumerate(OS_ADAPT_ENUM_ALL, nullptr);
    trial.Step("OS_ADAPT_RegisterDeviceStateProcessCallBack without a callback");
    adapter.Register(nullptr);
    trial.Step("OS_ADAPT_UnRegisterDeviceStateProcessCallBack without a callback");
    adapter.UnRegister(nullptr);
}

} // namespace

std::string CheckSymbols(Trial& trial) {
    try {
        trial.Adapter();
    } catch (const NotTried& reason) {
        throw Broken(reason.what());
    }
    return "it loads, and all seven are there";
}

std::string CheckResults(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    const auto roomy = std::make_unique<RoomyList>();
    trial.Step("enumerating");
    ExpectSuccess("OS_ADAPT_EnumDevicePortInfo",
                  adapter.Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list));
    trial.Step("registering");
    ExpectSuccess("OS_ADAPT_RegisterDeviceStateProcessCallBack",
                  adapter.Register(NoticeBook::OnNotice));
    trial.Step("un-registering");
    ExpectSuccess("OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
                  adapter.UnRegister(NoticeBook::OnNotice));
    return "enumeration (" + std::to_string(ToListing(roomy->list).size()) +
           " ports), registration and un-registration returned 30000";
}

std::string CheckPortCalls(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        UsePort(trial, port);
    }
    return std::to_string(trial.Options().ports.size()) +
           " ports opened, took a write, answered a read and closed";
}

std::string CheckNullArguments(Trial& trial) {
    const Listing before = trial.Enumerate();
    GiveNullNames(trial);
    GiveNulls(trial, OS_ADAPT_NO_HANDLE);
    for (const std::string& port : trial.Options().ports) {
        GiveNulls(trial, trial.Open(port));
    }
    trial.Step("enumerating after the null arguments");
    if (trial.Enumerate() != before) {
        throw Broken("the enumeration is another one after null arguments");
    }
    return "every call with a null argument returned";
}

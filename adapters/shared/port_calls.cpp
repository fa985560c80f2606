// SPDX-License-Identifier: MIT
#include "adapters/shared/port_calls.h"

#include <cerrno>
#include <string>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"
#include "adapters/shared/terminal.h"

namespace {

int Refuse(const std::string& reason) {
    LogErrorOnce(reason);
    return OS_ADAPT_FAILED;
}

int RefuseUnknown(const char* operation, int handle) {
    return Refuse(std::string(operation) + ": handle " + std::to_string(handle) +
                  " is not open; open the port first");
}

// @return whether the handle is dead from now on.
bool ReportBroken(HandleTable& handles, int handle, const std::string& portName, int error) {
    if (error == EFAULT) {
        LogErrorOnce("port '" + Printable(portName) + "': the host's buffer cannot be accessed");
        return false;
    }
    LogErrorOnce("port '" + Printable(portName) + "' does not work any more: " + ErrnoText(error) +
                 "; open it again when its device is back");
    handles.Kill(handle);
    return true;
}

// A dead port fails one read, which tells the host; failing for ever would flood the log.
int ReadDead(HandleTable& handles, int handle, const std::string& portName, long* read) {
    if (!handles.TakeDeathNotice(handle)) {
        *read = 0;
        return OS_ADAPT_OK;
    }
    LogInfo("port '" + Printable(portName) + "' is gone; this is its last failing read");
    return OS_ADAPT_FAILED;
}

void ReportStall(HandleTable& handles, int handle, const HandleTable::Found& port) {
    if (handles.TakeStallNotice(handle)) {
        LogError("port '" + Printable(port.portName) + "' took no byte within " +
                 std::to_string(port.terminal->WriteTime().count()) +
                 " ms: nobody reads at its far end");
    }
}

// Shielded: a terminal that turns out to be broken is closed here.
int ReadOpenOrDead(HandleTable& handles, int handle, void* buffer, size_t size, long* read) {
    const CancelShield shield;
    const HandleTable::Found port = handles.Find(handle);
    if (port.state == HandleTable::State::Unknown) {
        return RefuseUnknown("OS_ADAPT_Read", handle);
    }
    if (port.state == HandleTable::State::Dead) {
        return ReadDead(handles, handle, port.portName, read);
    }
    const Transfer got = ReadAvailable(port.terminal->Descriptor(), buffer, size);
    if (got.error != 0) {
        if (ReportBroken(handles, handle, port.portName, got.error)) {
            handles.TakeDeathNotice(handle); // this failure is the one
        }
        return OS_ADAPT_FAILED;
    }
    *read = static_cast<long>(got.count);
    return OS_ADAPT_OK;
}

} // namespace

int WritePort(HandleTable& handles, int handle, const void* data, long length, long* written) {
    if (data == nullptr || length < 0 || written == nullptr) {
        return Refuse("OS_ADAPT_Write: data or written is null, or length is negative");
    }
    const HandleTable::Found port = handles.Find(handle);
    if (port.state == HandleTable::State::Unknown) {
        return RefuseUnknown("OS_ADAPT_Write", handle);
    }
    if (port.state == HandleTable::State::Dead) {
        return Refuse("OS_ADAPT_Write: port '" + Printable(port.portName) + "' is gone");
    }
    const OpenTerminal& terminal = *port.terminal;
    const Transfer sent =
        WriteWithin(terminal.Descriptor(), data, static_cast<size_t>(length), terminal.WriteTime());
    if (sent.error != 0 && sent.count == 0) {
        ReportBroken(handles, handle, port.portName, sent.error);
        return OS_ADAPT_FAILED;
    }
    if (sent.count == 0 && length > 0) {
        ReportStall(handles, handle, port);
    }
    *written = static_cast<long>(sent.count);
    return OS_ADAPT_OK;
}

int ReadPort(HandleTable& handles, int handle, void* buffer, long size, long* read) {
    if (buffer == nullptr || size <= 0 || read == nullptr) {
        return Refuse("OS_ADAPT_Read: buffer or read is null, or size is not positive");
    }
    if (handles.IsIdle(handle)) {
        *read = 0;
        return OS_ADAPT_OK;
    }
    return ReadOpenOrDead(handles, handle, buffer, static_cast<size_t>(size), read);
}

int ClosePort(HandleTable& handles, int handle) {
    return handles.Remove(handle) ? OS_ADAPT_OK : RefuseUnknown("OS_ADAPT_ClosePort", handle);
}

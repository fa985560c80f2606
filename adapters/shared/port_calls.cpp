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

// "port 'COM1'"
std::string Port(const HandleTable& handles, int handle) {
    return "port '" + Printable(handles.PortName(handle)) + "'";
}

// @return whether the handle is dead from now on.
bool ReportBroken(HandleTable& handles, int handle, int error) {
    if (error == EFAULT) {
        LogErrorOnce(Port(handles, handle) + ": the host's buffer cannot be accessed");
        return false;
    }
    LogErrorOnce(Port(handles, handle) + " does not work any more: " + ErrnoText(error) +
                 "; open it again when its device is back");
    handles.Kill(handle);
    return true;
}

// A dead port fails one read, which tells the host; failing for ever would flood the log.
int ReadDead(HandleTable& handles, int handle, long* read) {
    if (!handles.TakeDeathNotice(handle)) {
        *read = 0;
        return OS_ADAPT_OK;
    }
    LogInfo(Port(handles, handle) + " is gone; this is its last failing read");
    return OS_ADAPT_FAILED;
}

void ReportStall(HandleTable& handles, int handle, OpenTerminal::Time time) {
    if (handles.TakeStallNotice(handle)) {
        LogError(Port(handles, handle) + " took no byte within " + std::to_string(time.count()) +
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
        return ReadDead(handles, handle, read);
    }
    const Transfer got = ReadAvailable(port.terminal->Descriptor(), buffer, size);
    if (got.error != 0) {
        if (ReportBroken(handles, handle, got.error)) {
            handles.TakeDeathNotice(handle); // this failure is the one
        }
        return OS_ADAPT_FAILED;
    }
    *read = static_cast<long>(got.count);
    return OS_ADAPT_OK;
}

// What a first attempt has left over, all of it perhaps. Apart, so that the attempt stays short.
[[gnu::noinline]] int WriteRest(HandleTable& handles, int handle, const void* data, size_t size,
                                size_t done, long* written) {
    const HandleTable::Found port = handles.Find(handle);
    if (port.state != HandleTable::State::Open && done > 0) {
        *written = static_cast<long>(done); // gone since
        return OS_ADAPT_OK;
    }
    if (port.state == HandleTable::State::Unknown) {
        return RefuseUnknown("OS_ADAPT_Write", handle);
    }
    if (port.state == HandleTable::State::Dead) {
        return Refuse("OS_ADAPT_Write: " + Port(handles, handle) + " is gone");
    }
    const OpenTerminal& terminal = *port.terminal;
    const Transfer sent =
        WriteWithin(terminal.Descriptor(), static_cast<const unsigned char*>(data) + done,
                    size - done, terminal.WriteTime());
    if (sent.error != 0 && done + sent.count == 0) {
        ReportBroken(handles, handle, sent.error);
        return OS_ADAPT_FAILED;
    }
    if (done + sent.count == 0 && size > 0) {
        ReportStall(handles, handle, terminal.WriteTime());
    }
    *written = static_cast<long>(done + sent.count);
    return OS_ADAPT_OK;
}

} // namespace

int WritePort(HandleTable& handles, int handle, const void* data, long length, long* written) {
    if (data == nullptr || length < 0 || written == nullptr) {
        return Refuse("OS_ADAPT_Write: data or written is null, or length is negative");
    }
    const auto size = static_cast<size_t>(length);
    Transfer sent;
    handles.RunInside(handle, [&](int terminal) { sent = WriteAvailable(terminal, data, size); });
    if (sent.count == 0 || sent.count < size) {
        return WriteRest(handles, handle, data, size, sent.count, written);
    }
    *written = length;
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

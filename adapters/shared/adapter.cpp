// SPDX-License-Identifier: MIT
#include "adapters/shared/adapter.h"

#include <unistd.h>

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/shared/cancel_shield.h"
#include "adapters/shared/port_calls.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

int Refuse(const std::string& reason) {
    LogErrorOnce(reason);
    return OS_ADAPT_FAILED;
}

} // namespace

Adapter& Adapter::Instance() {
    alignas(Adapter) static unsigned char storage[sizeof(Adapter)];
    static auto* adapter = new (storage) Adapter;
    return *adapter;
}

Adapter::Adapter() {
    PrepareLog();
    m_Notifier.SetToldHook(WakeSource, this);
}

int Adapter::Register(OS_ADAPT_STATUS_CALLBACK callback) {
    if (callback == nullptr) {
        return Refuse("OS_ADAPT_RegisterDeviceStateProcessCallBack: the callback is null");
    }
    const CancelShield shield;
    UseSource();
    if (const int error = m_Notifier.Register(callback); error != 0) {
        return Refuse("no thread for device notices: " + ErrnoText(error));
    }
    return OS_ADAPT_OK;
}

int Adapter::UnRegister() {
    m_Notifier.UnRegister();
    const CancelShield shield;
    EndSource();
    ForgetLoggedErrors();
    return OS_ADAPT_OK;
}

int Adapter::Open(const char* portName, int* handle) {
    if (portName == nullptr || handle == nullptr) {
        return Refuse("OS_ADAPT_OpenPort: name or handle is null");
    }
    const CancelShield shield;
    try {
        *handle = UseSource()->Open(portName);
        return OS_ADAPT_OK;
    } catch (const std::runtime_error& error) {
        return Refuse("port '" + Printable(portName) + "' cannot be opened: " + error.what());
    }
}

int Adapter::Close(int handle) {
    const CancelShield shield;
    const int result = ClosePort(m_Handles, handle);
    Wake();
    return result;
}

// Not behind a shield: it may take a second.
int Adapter::Write(int handle, const void* data, long length, long* written) {
    return WritePort(m_Handles, handle, data, length, written);
}

// Shielded where it matters: two hundred idle ports take this way a hundred times a second.
int Adapter::Read(int handle, void* buffer, long size, long* read) {
    if (m_Gone && read != nullptr) {
        *read = 0; // the process is ending and the host's read thread has not noticed
        return OS_ADAPT_OK;
    }
    return ReadPort(m_Handles, handle, buffer, size, read);
}

int Adapter::Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (which != OS_ADAPT_ENUM_ALL || list == nullptr) {
        return Refuse("OS_ADAPT_EnumDevicePortInfo: the list is null, or the first argument is " +
                      std::to_string(which) + " and not 4");
    }
    const CancelShield shield;
    const std::shared_ptr<PortSource> source = UseSource();
    if (!m_Notifier.IsListenedTo()) {
        source->Refresh();
    }
    m_Notifier.Answer(*list);
    return OS_ADAPT_OK;
}

void Adapter::Shutdown() {
    // A forked child has the memory but not the threads; the files are its parent's.
    if (m_Gone.exchange(true) || (m_Owner != 0 && m_Owner != getpid())) {
        return;
    }
    m_Notifier.Abandon();
    EndSource();
    m_Notifier.Abandon(); // until then the source may have published
    m_Handles.Clear();
    ForgetLoggedErrors();
}

std::shared_ptr<PortSource> Adapter::UseSource() {
    const Lock lock(m_SourceMutex);
    if (m_Gone) {
        throw std::runtime_error("the process is ending");
    }
    if (m_Source == nullptr) {
        m_Owner = getpid();
        m_Source = StartPortSource(m_Handles, m_Notifier);
    }
    return m_Source;
}

// With the lock held: a source that starts meanwhile would find the directory in use.
void Adapter::EndSource() {
    const Lock lock(m_SourceMutex);
    if (m_Source != nullptr) {
        m_Source->Stop(); // an opening on another thread may hold it for a moment longer
        m_Source.reset();
    }
    m_Handles.KillAll();
}

// On the notifying thread: whoever waits for the end of a notice gets a reply.
void Adapter::WakeSource(void* self) { static_cast<Adapter*>(self)->Wake(); }

void Adapter::Wake() {
    std::shared_ptr<PortSource> source;
    {
        const Lock lock(m_SourceMutex);
        source = m_Source;
    }
    if (source != nullptr) {
        source->Wake();
    }
}

// SPDX-License-Identifier: MIT
#include "adapters/virtual/virtual_adapter.h"

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

VirtualAdapter& VirtualAdapter::Instance() {
    alignas(VirtualAdapter) static unsigned char storage[sizeof(VirtualAdapter)];
    static auto* adapter = new (storage) VirtualAdapter;
    return *adapter;
}

VirtualAdapter::VirtualAdapter() {
    PrepareLog();
    m_Notifier.SetToldHook(WakeSession, this);
}

int VirtualAdapter::Register(OS_ADAPT_STATUS_CALLBACK callback) {
    if (callback == nullptr) {
        return Refuse("OS_ADAPT_RegisterDeviceStateProcessCallBack: the callback is null");
    }
    const CancelShield shield;
    UseSession();
    if (const int error = m_Notifier.Register(callback); error != 0) {
        return Refuse("no thread for device notices: " + ErrnoText(error));
    }
    return OS_ADAPT_OK;
}

int VirtualAdapter::UnRegister() {
    m_Notifier.UnRegister();
    const CancelShield shield;
    EndSession();
    ForgetLoggedErrors();
    return OS_ADAPT_OK;
}

int VirtualAdapter::Open(const char* portName, int* handle) {
    if (portName == nullptr || handle == nullptr) {
        return Refuse("OS_ADAPT_OpenPort: name or handle is null");
    }
    const CancelShield shield;
    try {
        *handle = UseSession()->Open(portName);
        return OS_ADAPT_OK;
    } catch (const std::runtime_error& error) {
        return Refuse("port '" + Printable(portName) + "' cannot be opened: " + error.what());
    }
}

int VirtualAdapter::Close(int handle) {
    const CancelShield shield;
    const int result = ClosePort(m_Handles, handle);
    Wake();
    return result;
}

// Not behind a shield: it may take a second.
int VirtualAdapter::Write(int handle, const void* data, long length, long* written) {
    return WritePort(m_Handles, handle, data, length, written);
}

int VirtualAdapter::Read(int handle, void* buffer, long size, long* read) {
    const CancelShield shield;
    if (m_Gone && read != nullptr) {
        *read = 0; // the process is ending and the host's read thread has not noticed
        return OS_ADAPT_OK;
    }
    return ReadPort(m_Handles, handle, buffer, size, read);
}

int VirtualAdapter::Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (which != OS_ADAPT_ENUM_ALL || list == nullptr) {
        return Refuse("OS_ADAPT_EnumDevicePortInfo: the list is null, or the first argument is " +
                      std::to_string(which) + " and not 4");
    }
    const CancelShield shield;
    UseSession();
    m_Notifier.Answer(*list);
    return OS_ADAPT_OK;
}

void VirtualAdapter::Shutdown() {
    // A forked child has the memory but not the threads; the files are its parent's.
    if (m_Gone.exchange(true) || (m_Owner != 0 && m_Owner != getpid())) {
        return;
    }
    m_Notifier.Abandon();
    EndSession();
    m_Handles.Clear();
    ForgetLoggedErrors();
}

std::shared_ptr<Session> VirtualAdapter::UseSession() {
    const Lock lock(m_SessionMutex);
    if (m_Gone) {
        throw std::runtime_error("the process is ending");
    }
    if (m_Session == nullptr) {
        m_Owner = getpid();
        m_Session = std::make_shared<Session>(m_Handles, m_Notifier);
    }
    return m_Session;
}

// With the lock held: a session that starts meanwhile would find the directory in use.
void VirtualAdapter::EndSession() {
    const Lock lock(m_SessionMutex);
    if (m_Session != nullptr) {
        m_Session->Stop(); // an opening on another thread may hold it for a moment longer
        m_Session.reset();
    }
    m_Handles.KillAll();
}

// On the notifying thread: whoever waits for the end of a notice gets a reply.
void VirtualAdapter::WakeSession(void* self) { static_cast<VirtualAdapter*>(self)->Wake(); }

void VirtualAdapter::Wake() {
    std::shared_ptr<Session> session;
    {
        const Lock lock(m_SessionMutex);
        session = m_Session;
    }
    if (session != nullptr) {
        session->Wake();
    }
}

// SPDX-License-Identifier: MIT
//
// How each call, and each notice, is passed on.
#include "adapters/spy/spy.h"

// Notes a call on every way out of it, cancellation included.
class Spy::Watched {
  public:
    Watched(Spy& spy, Call& call) : m_Spy(spy), m_Call(call) { m_Call.startNs = MonotonicNs(); }
    ~Watched() {
        m_Call.endNs = MonotonicNs();
        m_Spy.Note(m_Call);
    }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

  private:
    Spy& m_Spy;
    Call& m_Call;
};

template <typename PassOn> int Spy::Run(Call& call, PassOn passOn) {
    const CallFate fate = m_Faults.Next(call.kind, call.port);
    call.fault = fate.Text();
    const Watched watched(*this, call);
    fate.Wait();
    call.result = fate.IsPassedOn() ? passOn(fate) : fate.Result();
    if (fate.FailsAfterwards()) {
        call.result = OS_ADAPT_FAILED;
    }
    call.isFinished = true;
    return call.result;
}

int Spy::Register(OS_ADAPT_STATUS_CALLBACK callback) {
    StartCounting();
    Call call(OSADAPT_SPY_REGISTER);
    return Run(call, [&](const CallFate&) {
        const OS_ADAPT_STATUS_CALLBACK before = m_Callback.exchange(callback);
        const int result =
            m_Target.Functions().registerCallback(callback == nullptr ? nullptr : OnNotice);
        if (result == OS_ADAPT_OK) {
            m_IsRegistered = true;
        } else {
            m_Callback = before;
        }
        return result;
    });
}

// The callback is kept: whether it is told of anything from now on is the other adapter's doing.
int Spy::UnRegister(OS_ADAPT_STATUS_CALLBACK callback) {
    Call call(OSADAPT_SPY_UNREGISTER);
    const bool isOurs = callback != nullptr && callback == m_Callback;
    bool hasEnded = false;
    const int result = Run(call, [&](const CallFate&) {
        const int passed = m_Target.Functions().unRegisterCallback(isOurs ? OnNotice : callback);
        hasEnded = passed == OS_ADAPT_OK;
        return passed;
    });
    if (hasEnded) {
        m_IsRegistered = false;
        m_IsResting = true;
        Rest();
    }
    return result;
}

int Spy::Open(const char* portName, int* handle) {
    StartCounting();
    Call call(OSADAPT_SPY_OPEN, portName == nullptr ? nullptr : m_Ports.Named(portName));
    return Run(call, [&](const CallFate&) {
        const int result = m_Target.Functions().open(portName, handle);
        call.handle = handle == nullptr ? OS_ADAPT_NO_HANDLE : *handle;
        if (result == OS_ADAPT_OK && call.port != nullptr) {
            m_Ports.SetHandle(call.port, call.handle);
        }
        return result;
    });
}

int Spy::Close(int handle) {
    Call call(OSADAPT_SPY_CLOSE, m_Ports.OfHandle(handle));
    call.handle = handle;
    return Run(call, [&](const CallFate&) { return m_Target.Functions().close(handle); });
}

int Spy::Write(int handle, const void* data, long length, long* written) {
    Call call(OSADAPT_SPY_WRITE, m_Ports.OfHandle(handle));
    call.handle = handle;
    call.data = data;
    call.length = length;
    return Run(call, [&](const CallFate& fate) {
        const int result =
            m_Target.Functions().write(handle, data, fate.Shortened(length), written);
        call.count = result == OS_ADAPT_OK && written != nullptr ? *written : 0;
        return result;
    });
}

int Spy::Read(int handle, void* buffer, long size, long* read) {
    Call call(OSADAPT_SPY_READ, m_Ports.OfHandle(handle));
    call.handle = handle;
    call.data = buffer;
    call.length = size;
    return Run(call, [&](const CallFate& fate) {
        const int result = m_Target.Functions().read(handle, buffer, fate.Shortened(size), read);
        call.count = result == OS_ADAPT_OK && read != nullptr ? *read : 0;
        return result;
    });
}

int Spy::Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    StartCounting();
    Call call(OSADAPT_SPY_ENUMERATE);
    call.which = which;
    return Run(call, [&](const CallFate&) {
        const int result = m_Target.Functions().enumerate(which, list);
        call.list = list;
        return result;
    });
}

void Spy::OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    if (Spy* const spy = s_Spy; spy != nullptr) {
        spy->PassNotice(status);
    }
}

void Spy::PassNotice(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    Call call(OSADAPT_SPY_NOTICE);
    call.status = status;
    const Watched watched(*this, call);
    if (const OS_ADAPT_STATUS_CALLBACK callback = m_Callback; callback != nullptr) {
        callback(status);
    }
    call.result = OS_ADAPT_OK;
    call.isFinished = true;
}

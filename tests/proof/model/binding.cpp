// SPDX-License-Identifier: MIT
#include "tests/proof/model/binding.h"

#include "manager/osadapt_binding.h"
#include "tests/proof/model/host_callbacks.h"

namespace model {
namespace {

World& Adapter() { return Called().Adapter(); }

int Register(OS_ADAPT_STATUS_CALLBACK) { return Adapter().Register(); }
int UnRegister(OS_ADAPT_STATUS_CALLBACK) { return Adapter().UnRegister(); }
int Open(const char* portName, int* handle) { return Adapter().Open(portName, handle); }
int Close(int handle) { return Adapter().Close(handle); }
int Write(int handle, const void* data, long length, long* written) {
    return Adapter().Write(handle, data, length, written);
}
int Read(int handle, void* buffer, long size, long* read) {
    return Adapter().Read(handle, buffer, size, read);
}
int Enum(int which, _OS_ADAPT_DEVICEPORTLIST* list) { return Adapter().Enum(which, list); }

} // namespace

const AdapterFunctions& WorldFunctions() {
    static constexpr AdapterFunctions kFunctionsOfWorld = {Register, UnRegister, Open, Close,
                                                           Write,    Read,       Enum};
    return kFunctionsOfWorld;
}

void Bind(int missing) {
    const auto unless = [missing](Function which, auto function) {
        return missing == static_cast<int>(which) ? nullptr : function;
    };
    pfnRegDevStateProc = unless(Function::kRegister, &Register);
    pfnUnRegDevStateProc = unless(Function::kUnRegister, &UnRegister);
    pfnOpenPort = unless(Function::kOpen, &Open);
    pfnClosePort = unless(Function::kClose, &Close);
    pfnWrite = unless(Function::kWrite, &Write);
    pfnRead = unless(Function::kRead, &Read);
    pfnEnumPortInfo = unless(Function::kEnum, &Enum);
}

} // namespace model

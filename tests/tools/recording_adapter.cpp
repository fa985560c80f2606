// SPDX-License-Identifier: MIT
//
// An adapter with one port, which writes down what it is sent and told. Variables steer it:
//   RECORDING_DIRECTORY  where "sent" and "line" are written
//   RECORDING_STEP       most bytes that a write takes (default 100)
//   RECORDING_ROOM       bytes that it takes in all (default: any number)
//   RECORDING_HANG       closing a port never returns
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "OSAdapt.h"
#include "OSAdaptLine.h"

namespace {

long s_Taken = 0;

long Number(const char* variable, long otherwise) {
    const char* value = std::getenv(variable);
    return value == nullptr ? otherwise : std::atol(value);
}

void Append(const char* file, const void* data, size_t size) {
    const char* directory = std::getenv("RECORDING_DIRECTORY");
    const std::string path = std::string(directory == nullptr ? "." : directory) + "/" + file;
    FILE* stream = std::fopen(path.c_str(), "ab");
    if (stream != nullptr) {
        std::fwrite(data, 1, size, stream);
        std::fclose(stream);
    }
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK /*cb*/) {
    return OS_ADAPT_OK;
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK /*cb*/) {
    return OS_ADAPT_OK;
}

int OS_ADAPT_OpenPort(const char* /*portName*/, int* handle) {
    *handle = 1;
    return OS_ADAPT_OK;
}

int OS_ADAPT_ClosePort(int /*handle*/) {
    while (std::getenv("RECORDING_HANG") != nullptr) {
        pause();
    }
    return OS_ADAPT_OK;
}

int OS_ADAPT_Write(int /*handle*/, const void* data, long length, long* written) {
    const long step = Number("RECORDING_STEP", 100);
    const long room = Number("RECORDING_ROOM", s_Taken + step) - s_Taken;
    *written = length < step ? length : step;
    *written = *written < room ? *written : room;
    s_Taken += *written;
    Append("sent", data, static_cast<size_t>(*written));
    return OS_ADAPT_OK;
}

int OS_ADAPT_Read(int /*handle*/, void* /*buffer*/, long /*size*/, long* read) {
    *read = 0;
    return OS_ADAPT_OK;
}

int OS_ADAPT_EnumDevicePortInfo(int /*which*/, _OS_ADAPT_DEVICEPORTLIST* list) {
    list->nDeviceCount = 1;
    list->stDevice[0].nPortCount = 1;
    // A name with what steers terminals, and with bytes that are no UTF-8.
    std::strcpy(list->stDevice[0].szDeviceName, "recorder\x1b[31m\xff");
    std::strcpy(list->stDevice[0].stPort[0].szPortName, "recorder-0");
    std::puts("a line that an adapter prints");
    std::fflush(stdout);
    return OS_ADAPT_OK;
}

int OSADAPT_SetLine(const char* portName, const char* settings) {
    const std::string line = std::string(portName) + " " + settings + "\n";
    Append("line", line.data(), line.size());
    return std::strcmp(settings, "nonsense") == 0 ? OS_ADAPT_FAILED : OS_ADAPT_OK;
}

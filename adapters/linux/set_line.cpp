// SPDX-License-Identifier: MIT
#include <stdexcept>
#include <string>

#include "OSAdaptLine.h"
#include "adapters/linux/linux_ports.h"
#include "adapters/shared/adapter.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/guarded.h"

namespace {

int Refuse(const std::string& reason) {
    LogErrorOnce(reason);
    return OS_ADAPT_FAILED;
}

int SetLine(const std::string& portName, const std::string& settings) {
    try {
        const auto source = Adapter::Instance().UseSource();
        std::static_pointer_cast<LinuxPorts>(source)->SetLine(portName, settings);
        return OS_ADAPT_OK;
    } catch (const std::runtime_error& error) {
        return Refuse("the line of port '" + Printable(portName) +
                      "' cannot be set: " + error.what());
    }
}

} // namespace

int OSADAPT_SetLine(const char* portName, const char* settings) {
    return Guarded(__func__, [&] {
        if (portName == nullptr) {
            return Refuse("OSADAPT_SetLine: the port's name is null");
        }
        return SetLine(portName, settings == nullptr ? "" : settings);
    });
}

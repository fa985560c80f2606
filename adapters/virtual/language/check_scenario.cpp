// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <exception>
#include <string>

#include "OSAdapt.h"
#include "OSAdaptScenario.h"
#include "adapters/shared/guarded.h"
#include "adapters/virtual/language/scenario.h"

namespace {

std::string Mistake(const char* file) {
    if (file == nullptr) {
        return "OSADAPT_CheckScenario:0: the file's name is null";
    }
    try {
        return ReadScenarioFile(file).error;
    } catch (const std::exception& error) { // no memory, for one
        return std::string(file) + ":0: " + error.what();
    }
}

void Store(std::string text, char* reason, long size) {
    if (reason == nullptr || size <= 0) {
        return;
    }
    std::replace_if(
        text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; },
        '?');
    const size_t length = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(reason, text.data(), length);
    reason[length] = '\0';
}

} // namespace

int OSADAPT_CheckScenario(const char* file, char* reason, long size) {
    return Guarded(__func__, [&] {
        const std::string error = Mistake(file);
        Store(error, reason, size);
        return error.empty() ? OS_ADAPT_OK : OS_ADAPT_FAILED;
    });
}

// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/check.h"

#include <dlfcn.h>

#include "OSAdapt.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr size_t kReasonSize = 4096;

std::string LoadError() {
    const char* error = dlerror();
    return error == nullptr ? "unknown" : error;
}

} // namespace

ScenarioChecker::ScenarioChecker(const std::string& adapterFile)
    : m_Library(dlopen(adapterFile.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_Library == nullptr) {
        throw Failure("the adapter cannot be loaded: " + LoadError());
    }
    m_Check =
        reinterpret_cast<OSADAPT_CHECK_SCENARIO>(dlsym(m_Library, OSADAPT_CHECK_SCENARIO_NAME));
    if (m_Check == nullptr) {
        dlclose(m_Library);
        throw Failure(adapterFile + " has no scenarios; the virtual adapter has");
    }
}

ScenarioChecker::~ScenarioChecker() { dlclose(m_Library); }

std::string ScenarioChecker::MistakeIn(const std::string& file) const {
    char reason[kReasonSize] = "";
    const int result = m_Check(file.c_str(), reason, static_cast<long>(sizeof reason));
    return result == OS_ADAPT_OK ? "" : reason;
}

int CheckScenario(const ScenarioChecker& checker, const std::string& file) {
    const std::string mistake = checker.MistakeIn(file);
    if (mistake.empty()) {
        WriteData(Printable(file) + ": good\n");
        return kDone;
    }
    WriteMessage(Printable(mistake) + "\n"); // as compilers do, for editors
    return kFailed;
}

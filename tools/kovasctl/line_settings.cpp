// SPDX-License-Identifier: MIT
#include "tools/kovasctl/line_settings.h"

#include <dlfcn.h>

#include <memory>

#include "OSAdapt.h"
#include "OSAdaptLine.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/printable.h"

namespace {

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};
using LoadedAdapter = std::unique_ptr<void, CloseLibrary>;

// By its file, which is certain to be the one that the library has loaded.
LoadedAdapter FindLoaded(const AdapterPlace& adapter) {
    return LoadedAdapter(dlopen(adapter.file.c_str(), RTLD_NOW | RTLD_NOLOAD));
}

} // namespace

void SetLine(Library& library, const std::string& portName, const std::string& settings) {
    const LoadedAdapter adapter = FindLoaded(library.Adapter());
    const auto setLine =
        adapter == nullptr
            ? nullptr
            : reinterpret_cast<OSADAPT_SET_LINE>(dlsym(adapter.get(), OSADAPT_SET_LINE_NAME));
    if (setLine == nullptr) {
        throw Failure("the line cannot be set: the adapter " + library.Adapter().file +
                      " has no lines to set (no " OSADAPT_SET_LINE_NAME ")");
    }
    const uint64_t mark = library.Mark();
    if (setLine(portName.c_str(), settings.c_str()) != OS_ADAPT_OK) {
        throw Failure("the line '" + Printable(settings) + "' cannot be set on " +
                      Printable(portName) + library.Reason(mark, portName));
    }
}

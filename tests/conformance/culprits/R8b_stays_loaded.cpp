// SPDX-License-Identifier: MIT
//
// It keeps itself loaded, as unique symbols do.
#include <dlfcn.h>

#include "tests/conformance/good_adapter.h"

namespace {

__attribute__((constructor)) void Stay() {
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(Stay), &self);
    dlopen(self.dli_fname, RTLD_NOW | RTLD_NODELETE);
}

} // namespace

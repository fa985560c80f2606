// SPDX-License-Identifier: MIT
#include "KOVASMgrPaths.h"

#include <cstring>
#include <string>

#include "common/jdir.h"

namespace {

char g_pszCurrentPath[KOVASMGR_PATH_SIZE];
char g_KOVASMgrDllPath[KOVASMGR_PATH_SIZE];
char g_OSAdaptDllPath[KOVASMGR_PATH_SIZE];

void CopyCut(char (&buffer)[KOVASMGR_PATH_SIZE], const std::string& text) {
    const size_t length = text.copy(buffer, sizeof(buffer) - 1);
    buffer[length] = '\0';
}

// The text of the first call stays, also when the current directory changes later.
char* OnceInCurrentPath(char (&buffer)[KOVASMGR_PATH_SIZE], const char* tail) {
    if (buffer[0] == '\0') {
        CopyCut(buffer, std::string(GetCurrentPath()) + tail);
    }
    return buffer;
}

} // namespace

char* GetCurrentPath() {
    CopyCut(g_pszCurrentPath, JDir::getCurrentPath());
    return g_pszCurrentPath;
}

char* GetKOVASMgrDllPath() { return OnceInCurrentPath(g_KOVASMgrDllPath, "/KOVASMgr"); }

char* GetOSAdaptDllPath() { return OnceInCurrentPath(g_OSAdaptDllPath, "/libOSAdapt.dylib"); }

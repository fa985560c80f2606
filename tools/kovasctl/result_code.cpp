// SPDX-License-Identifier: MIT
#include "tools/kovasctl/result_code.h"

#include "KOVASMgr.h"

namespace {

struct CodeName {
    long code;
    const char* name;
};

constexpr CodeName kNames[] = {
    {KOVAMGR_OK, "KOVAMGR_OK"},
    {KOVAMGR_ERR_PARAM, "KOVAMGR_ERR_PARAM"},
    {KOVAMGR_ERR_OSADAPT, "KOVAMGR_ERR_OSADAPT"},
    {KOVAMGR_ERR_NOT_INIT, "KOVAMGR_ERR_NOT_INIT"},
    {KOVAMGR_ERR_NO_HANDLE, "KOVAMGR_ERR_NO_HANDLE"},
    {KOVAMGR_ERR_THREAD, "KOVAMGR_ERR_THREAD"},
};

} // namespace

std::string ResultCodeText(long code) {
    for (const CodeName& entry : kNames) {
        if (entry.code == code) {
            return std::string(entry.name) + " (" + std::to_string(code) + ")";
        }
    }
    return "result " + std::to_string(code);
}

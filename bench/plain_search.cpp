// SPDX-License-Identifier: MIT
#include "bench/plain_search.h"

#include <string.h>

namespace {

bool Folds(const char* s, const char* pattern, int n) {
    for (int i = 0; i < n; ++i) {
        const char p = pattern[i];
        if (p >= 'B' && p <= 'Y') {
            if (s[i] != p && s[i] != p + 32) {
                return false;
            }
        } else if (p >= 'b' && p <= 'y') {
            if (s[i] != p && s[i] != p - 32) {
                return false;
            }
        } else if (s[i] != p) {
            return false;
        }
    }
    return true;
}

// The loops keep the searches' whole contract.
bool IsSearchable(const char* hay, int hayLen, const char* needle, int needleLen) {
    return hay != nullptr && needle != nullptr && hayLen >= 1 && needleLen >= 1 &&
           hayLen >= needleLen;
}

} // namespace

const char* PlainSubMem(const char* hay, int hayLen, const char* needle, int needleLen) {
    if (!IsSearchable(hay, hayLen, needle, needleLen)) {
        return nullptr;
    }
    for (int start = 0; start <= hayLen - needleLen; ++start) {
        if (memcmp(hay + start, needle, static_cast<size_t>(needleLen)) == 0) {
            return hay + start;
        }
    }
    return nullptr;
}

const char* PlainSubCaseMem(const char* hay, int hayLen, const char* needle, int needleLen) {
    if (!IsSearchable(hay, hayLen, needle, needleLen)) {
        return nullptr;
    }
    for (int start = 0; start <= hayLen - needleLen; ++start) {
        if (Folds(hay + start, needle, needleLen)) {
            return hay + start;
        }
    }
    return nullptr;
}

const char* LibrarySubMem(const char* hay, int hayLen, const char* needle, int needleLen) {
    return static_cast<const char*>(
        memmem(hay, static_cast<size_t>(hayLen), needle, static_cast<size_t>(needleLen)));
}

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_GUARDED_H
#define KOVASMGR_ADAPTERS_GUARDED_H

#include <exception>
#include <string>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"

/// Runs the body of an exported function; an exception becomes a failure with a log line. Only
/// std::exception is caught: a cancellation, which unwinds like an exception, must pass.
template <typename Body> int Guarded(const char* function, Body body) {
    try {
        return body();
    } catch (const std::exception& error) {
        LogErrorOnce(std::string(function) + ": " + error.what());
        return OS_ADAPT_FAILED;
    }
}

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ERROR_HPP
#define KOVASMGR_ERROR_HPP

#include <KOVASMgr.h>

#include <string>
#include <system_error>

namespace kovasmgr {
inline namespace v1 {

/// Why something failed. Values of the library keep their numbers; success is no error.
enum class Errc {
    BadArgument = KOVAMGR_ERR_PARAM,       ///< bad argument, no such directory or port
    AdapterFailed = KOVAMGR_ERR_OSADAPT,   ///< KOVASMgr.log has the reason
    NotInitialised = KOVAMGR_ERR_NOT_INIT, ///< there is no Library, or not this one any more
    NotOpen = KOVAMGR_ERR_NO_HANDLE,       ///< the port is not open (any more)
    NoThread = KOVAMGR_ERR_THREAD,         ///< the library's own; hosts see AdapterFailed
    AlreadyInitialised = 1, ///< the process has a Library, or has called KOVAMGR_Init
    TooManyPorts = 2,       ///< kMaxOpenPorts objects hold a port
    NotFromReceiver = 3,    ///< a Watch cannot be made by a receiver
};

namespace detail {

class Category final : public std::error_category {
  public:
    const char* name() const noexcept override { return "kovasmgr"; }

    std::string message(int code) const override {
        switch (static_cast<Errc>(code)) {
        case Errc::BadArgument:
            return "bad argument, or no such directory or port";
        case Errc::AdapterFailed:
            return "the adapter failed, KOVASMgr.log has the reason";
        case Errc::NotInitialised:
            return "the library is not initialised";
        case Errc::NotOpen:
            return "the port is not open";
        case Errc::NoThread:
            return "no read thread";
        case Errc::AlreadyInitialised:
            return "the library is initialised already";
        case Errc::TooManyPorts:
            return "too many ports are held";
        case Errc::NotFromReceiver:
            return "not possible while a receiver runs";
        }
        return "code " + std::to_string(code);
    }
};

} // namespace detail

/// The category of all codes; its name is "kovasmgr".
inline const std::error_category& ErrorCategory() {
    static const detail::Category& category = *new detail::Category; // outlives every thread
    return category;
}

inline std::error_code make_error_code(Errc code) {
    return {static_cast<int>(code), ErrorCategory()};
}

namespace detail {

/// A result of the C interface: KOVAMGR_OK is no error.
inline std::error_code ErrorOf(long result) {
    if (result == KOVAMGR_OK) {
        return {};
    }
    return {static_cast<int>(result), ErrorCategory()};
}

inline void ThrowIf(std::error_code error, const std::string& what) {
    if (error) {
        throw std::system_error(error, what);
    }
}

} // namespace detail
} // namespace v1
} // namespace kovasmgr

template <> struct std::is_error_code_enum<kovasmgr::Errc> : std::true_type {};

#endif

// SPDX-License-Identifier: MIT
#include "common/jdir.h"

#include <filesystem>
#include <new>
#include <system_error>

bool JDir::exists() const {
    std::error_code error;
    return std::filesystem::is_directory(m_strPath, error);
}

std::string JDir::getCurrentPath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::current_path(error);
    if (error == std::errc::not_enough_memory) {
        throw std::bad_alloc(); // not empty: an adapter from elsewhere would be loaded
    }
    return error ? std::string() : path.string();
}

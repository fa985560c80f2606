// SPDX-License-Identifier: MIT
#include "common/jdir.h"

#include <filesystem>
#include <system_error>

bool JDir::exists() const {
    std::error_code error;
    return std::filesystem::is_directory(m_strPath, error);
}

std::string JDir::getCurrentPath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::current_path(error);
    return error ? std::string() : path.string();
}

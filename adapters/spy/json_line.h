// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_JSON_LINE_H
#define KOVASMGR_ADAPTERS_SPY_JSON_LINE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// A text between quotes: what is no UTF-8 becomes U+FFFD, control characters are escaped.
std::string JsonText(std::string_view text);

std::string Base64(const void* data, size_t size);

/// Builds one object, member by member in the order of the calls.
class JsonObject {
  public:
    JsonObject& Number(const char* name, int64_t value) { return Raw(name, std::to_string(value)); }
    JsonObject& Text(const char* name, std::string_view text) { return Raw(name, JsonText(text)); }
    JsonObject& Bytes(const char* name, const void* data, size_t size) {
        return Raw(name, '"' + Base64(data, size) + '"');
    }

    /// @param json  a complete value
    JsonObject& Raw(const char* name, const std::string& json) {
        m_Members += (m_Members.empty() ? "\"" : ",\"") + std::string(name) + "\":" + json;
        return *this;
    }

    std::string Done() const { return "{" + m_Members + "}"; }

  private:
    std::string m_Members;
};

#endif

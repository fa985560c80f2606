// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_TOML_TABLE_H
#define KOVASMGR_ADAPTERS_TOML_TABLE_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/shared/toml_parser.h"

/// The first mistake found in a file, and where. Later ones are not kept.
class Mistake {
  public:
    void Note(const toml::source_region& where, const std::string& reason);

    bool IsNoted() const { return !m_Reason.empty(); }
    std::string Text(const std::string& fileName) const;

  private:
    std::string m_Reason;
    toml::source_index m_Line = 0;
};

/// An entry of an array of texts.
struct TomlText {
    std::string text;
    toml::source_region where;
};

/// Reads the keys of one TOML table and finds the mistakes in it. A value that is wrong or missing
/// is noted as a mistake and read as its default.
class TomlTable {
  public:
    /// @param what  the table's name in messages: "device"
    TomlTable(const toml::table& table, const char* what, Mistake& mistake)
        : m_Table(table), m_What(what), m_Mistake(mistake) {}

    /// A text without control characters, of 1 to maxBytes bytes.
    std::string Name(const char* key, size_t maxBytes);

    /// As Name, but empty when the key is missing.
    std::string OptionalName(const char* key, size_t maxBytes);

    /// A text of any characters, 1 to maxBytes bytes.
    std::string Data(const char* key, size_t maxBytes);

    bool Flag(const char* key, bool ifMissing);
    long Number(const char* key, long ifMissing, long least, long most);

    /// A number with or without decimals.
    double Decimal(const char* key, double ifMissing, double least, double most);

    /// The entries of an array of at most so many texts of any characters.
    std::vector<TomlText> TextList(const char* key, size_t most);

    /// A table of texts of any characters, at most maxBytes bytes each; texts may be empty.
    std::map<std::string, std::string> Texts(const char* key, size_t maxBytes);

    /// The tables of an array that must have 1 to most of them.
    const toml::array* Tables(const char* key, size_t most);

    /// Where a key's value stands, or the table when the key is missing.
    const toml::source_region& Where(const char* key) const;

    /// Notes a key that nobody asked for.
    void RefuseOtherKeys();

  private:
    const toml::node* Find(const char* key);
    std::string Text(const char* key, const toml::node* node, size_t maxBytes);
    void RefuseControlCharacters(const char* key, const std::string& text);
    void Note(const char* key, const std::string& reason);
    void NoteMissing(const char* key);

    const toml::table& m_Table;
    const char* m_What;
    Mistake& m_Mistake;
    std::set<std::string_view> m_Asked;
};

#endif

// SPDX-License-Identifier: MIT
#include "adapters/shared/toml_table.h"

#include <algorithm>

#include "adapters/shared/adapter_log.h"

namespace {

std::string Quoted(const char* key) { return "'" + std::string(key) + "'"; }

bool IsControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

// Without the zeros that std::to_string puts behind it.
std::string Shown(double number) {
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

} // namespace

void Mistake::Note(const toml::source_region& where, const std::string& reason) {
    if (!IsNoted()) {
        m_Line = where.begin.line;
        m_Reason = reason;
    }
}

std::string Mistake::Text(const std::string& fileName) const {
    return fileName + ":" + std::to_string(m_Line) + ": " + m_Reason;
}

std::string TomlTable::Name(const char* key, size_t maxBytes) {
    const toml::node* node = Find(key);
    if (node == nullptr) {
        NoteMissing(key);
        return "";
    }
    std::string text = Text(key, node, maxBytes);
    RefuseControlCharacters(key, text);
    return text;
}

std::string TomlTable::OptionalName(const char* key, size_t maxBytes) {
    return m_Table.contains(key) ? Name(key, maxBytes) : "";
}

std::string TomlTable::Data(const char* key, size_t maxBytes) {
    const toml::node* node = Find(key);
    if (node == nullptr) {
        NoteMissing(key);
        return "";
    }
    return Text(key, node, maxBytes);
}

bool TomlTable::Flag(const char* key, bool ifMissing) {
    const toml::node* node = Find(key);
    if (node != nullptr && !node->is_boolean()) {
        Note(key, "must be true or false");
    }
    return node == nullptr ? ifMissing : node->value_or(ifMissing);
}

long TomlTable::Number(const char* key, long ifMissing, long least, long most) {
    const toml::node* node = Find(key);
    if (node == nullptr) {
        return ifMissing;
    }
    const auto value = node->value_exact<int64_t>();
    if (!value || *value < least || *value > most) {
        Note(key, "must be a whole number from " + std::to_string(least) + " to " +
                      std::to_string(most));
        return ifMissing;
    }
    return static_cast<long>(*value);
}

double TomlTable::Decimal(const char* key, double ifMissing, double least, double most) {
    const toml::node* node = Find(key);
    if (node == nullptr) {
        return ifMissing;
    }
    const auto value = node->is_number() ? node->value<double>() : std::nullopt;
    const bool isGood = value && *value >= least && *value <= most; // NaN is not
    if (!isGood) {
        Note(key, "must be a number from " + Shown(least) + " to " + Shown(most));
    }
    return isGood ? *value : ifMissing;
}

std::vector<TomlText> TomlTable::TextList(const char* key, size_t most) {
    std::vector<TomlText> texts;
    const toml::node* node = Find(key);
    const toml::array* array = node == nullptr ? nullptr : node->as_array();
    if (node != nullptr && array == nullptr) {
        Note(key, "must be an array of texts");
    } else if (array != nullptr && array->size() > most) {
        m_Mistake.Note((*array)[most].source(),
                       Quoted(key) + " has more than " + std::to_string(most) + " texts");
    } else if (array != nullptr) {
        for (const toml::node& each : *array) {
            texts.push_back({each.value_exact<std::string>().value_or(""), each.source()});
            if (!each.is_string()) {
                m_Mistake.Note(each.source(), Quoted(key) + " must hold texts only");
            }
        }
    }
    return texts;
}

std::map<std::string, std::string> TomlTable::Texts(const char* key, size_t maxBytes) {
    std::map<std::string, std::string> texts;
    const toml::node* node = Find(key);
    const toml::table* table = node == nullptr ? nullptr : node->as_table();
    if (node != nullptr && table == nullptr) {
        Note(key, "must be a table of texts");
    }
    if (table == nullptr) {
        return texts;
    }
    for (const auto& [name, value] : *table) {
        const auto text = value.value_exact<std::string>();
        if (!text) {
            m_Mistake.Note(value.source(), Quoted(key) + " must hold texts only");
        } else if (text->size() > maxBytes) {
            m_Mistake.Note(value.source(), Quoted(key) + " must hold texts of at most " +
                                               std::to_string(maxBytes) + " bytes, not " +
                                               std::to_string(text->size()));
        }
        texts[std::string(name.str())] = text.value_or("");
    }
    return texts;
}

const toml::array* TomlTable::Tables(const char* key, size_t most) {
    const toml::node* node = Find(key);
    if (node == nullptr) {
        m_Mistake.Note(m_Table.source(), std::string(m_What) + " has no " + key);
        return nullptr;
    }
    const toml::array* tables = node->as_array();
    if (tables == nullptr || tables->empty() || !tables->is_homogeneous<toml::table>()) {
        Note(key, "must be written as [[...]] tables, one or more");
        return nullptr;
    }
    if (tables->size() > most) {
        m_Mistake.Note((*tables)[most].source(), std::string(m_What) + " has more than " +
                                                     std::to_string(most) + " of " + Quoted(key));
        return nullptr;
    }
    return tables;
}

const toml::source_region& TomlTable::Where(const char* key) const {
    const toml::node* node = m_Table.get(key);
    return node == nullptr ? m_Table.source() : node->source();
}

void TomlTable::RefuseOtherKeys() {
    for (const auto& [key, value] : m_Table) {
        if (m_Asked.count(key.str()) == 0) {
            m_Mistake.Note(key.source(), std::string(m_What) + " has no key '" +
                                             Printable(std::string(key.str())) + "'");
        }
    }
}

const toml::node* TomlTable::Find(const char* key) {
    m_Asked.insert(key);
    return m_Table.get(key);
}

std::string TomlTable::Text(const char* key, const toml::node* node, size_t maxBytes) {
    const auto text = node->value_exact<std::string>();
    if (!text) {
        Note(key, "must be a text");
        return "";
    }
    if (text->empty() || text->size() > maxBytes) {
        Note(key, "must have 1 to " + std::to_string(maxBytes) + " bytes, not " +
                      std::to_string(text->size()));
    }
    return *text;
}

void TomlTable::RefuseControlCharacters(const char* key, const std::string& text) {
    if (std::any_of(text.begin(), text.end(), IsControl)) {
        Note(key, "must not contain control characters");
    }
}

void TomlTable::Note(const char* key, const std::string& reason) {
    m_Mistake.Note(Where(key), Quoted(key) + " " + reason);
}

void TomlTable::NoteMissing(const char* key) {
    m_Mistake.Note(m_Table.source(), std::string(m_What) + " lacks " + Quoted(key));
}

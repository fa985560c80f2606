// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "adapters/linux/line_file.h"
#include "adapters/shared/toml_table.h"
#include "adapters/shared/toml_text.h"

namespace {

constexpr size_t kMaxEntries = 256;
constexpr size_t kMaxText = 255;
constexpr long kMaxInterface = 255;

constexpr const char* kKeys[] = {"id", "serial", "place", "interface", "node", "name"};

bool IsHex(const std::string& text) {
    return text.size() == 4 && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::string Lower(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'F') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return text;
}

} // namespace

class LineFileReader {
  public:
    LineFileReader(LineFile& file, const std::string& fileName)
        : m_File(file), m_FileName(fileName) {}

    void Read(const toml::table& root) {
        TomlTable table(root, "file", m_Mistake);
        if (root.contains("line")) {
            m_File.m_ForAll = ReadLine(table);
        }
        if (root.contains("port")) {
            ReadEntries(table);
        }
        table.RefuseOtherKeys();
        if (m_Mistake.IsNoted()) {
            throw std::runtime_error(m_Mistake.Text(m_FileName));
        }
    }

  private:
    void ReadEntries(TomlTable& root) {
        if (const toml::array* ports = root.Tables("port", kMaxEntries)) {
            for (const toml::node& port : *ports) {
                m_File.m_Entries.push_back(ReadEntry(*port.as_table()));
            }
        }
    }

    LineFile::Entry ReadEntry(const toml::table& source) {
        TomlTable table(source, "port", m_Mistake);
        LineFile::Entry entry;
        entry.id = ReadId(table);
        entry.serial = table.OptionalName("serial", kMaxText);
        entry.place = table.OptionalName("place", kMaxText);
        entry.node = table.OptionalName("node", kMaxText);
        entry.name = table.OptionalName("name", kMaxText);
        entry.interfaceNumber = table.Number("interface", -1, 0, kMaxInterface);
        entry.line = ReadLine(table);
        table.RefuseOtherKeys();
        if (std::none_of(std::begin(kKeys), std::end(kKeys),
                         [&](const char* key) { return source.contains(key); })) {
            m_Mistake.Note(source.source(), "port says of no port that it is meant: give one of "
                                            "id, serial, place, interface, node, name");
        }
        return entry;
    }

    std::string ReadId(TomlTable& table) {
        std::string id = Lower(table.OptionalName("id", kMaxText));
        const size_t colon = std::min(id.find(':'), id.size());
        if (!id.empty() &&
            !(IsHex(id.substr(0, colon)) && colon < id.size() && IsHex(id.substr(colon + 1)))) {
            m_Mistake.Note(table.Where("id"), "'id' must look like \"0403:6001\"");
        }
        return id;
    }

    // The text itself is looked at when a port needs it.
    LineFile::Line ReadLine(TomlTable& table) {
        LineFile::Line line;
        line.text = table.Name("line", kMaxText);
        line.where = m_FileName + ":" + std::to_string(table.Where("line").begin.line);
        return line;
    }

    LineFile& m_File;
    const std::string& m_FileName;
    Mistake m_Mistake;
};

LineFile::LineFile(const std::string& text, const std::string& fileName) {
    LineFileReader(*this, fileName).Read(ParseToml(text, fileName));
}

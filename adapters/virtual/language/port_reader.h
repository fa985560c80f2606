// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_PORT_READER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_PORT_READER_H

#include <map>
#include <string>
#include <vector>

#include "adapters/shared/toml_table.h"
#include "adapters/virtual/recording/recording_reader.h"

/// Reads what a scenario's [[device.port]] tables say of a port and its far end.
class PortReader {
  public:
    /// @param folder  in which recordings are looked for, empty or with '/' at its end
    PortReader(const std::string& folder, Mistake& mistake)
        : m_Folder(folder), m_Mistake(mistake) {}

    /// Reads all keys but those of copies and events.
    PortSpec Read(TomlTable& table);

    /// What of recordings was left out.
    const std::vector<std::string>& Notes() const { return m_Notes; }

  private:
    FarEndKind ReadFarEnd(TomlTable& table);
    void ReadRecorded(TomlTable& table, PortSpec& port);
    const Recording& Find(const std::string& file);
    void Load(const std::string& path, Recording& recording);

    std::string m_Folder;
    Mistake& m_Mistake;
    std::map<std::string, Recording> m_Recordings; // by path
    std::vector<std::string> m_Notes;
    size_t m_Size = 0; // of all recordings' files
};

/// How many bytes the texts of a port's far end have.
size_t FarEndSize(const PortSpec& port);

#endif

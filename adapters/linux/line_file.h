// SPDX-License-Identifier: MIT
//
// One configuration file of lines:
//
//     line = "57600"                 # for all ports
//
//     [[port]]                       # for the ports that match all that is given
//     id = "0403:6001"               # vendor and product
//     serial = "A50285BI"
//     place = "1-1.4"
//     interface = 0
//     node = "/dev/ttyUSB*"          # a pattern
//     name = "FTDI*"                 # a pattern for the device's name
//     line = "9600 7E1 flow=rtscts"
#ifndef KOVASMGR_ADAPTERS_LINUX_LINE_FILE_H
#define KOVASMGR_ADAPTERS_LINUX_LINE_FILE_H

#include <string>
#include <vector>

#include "adapters/linux/line_settings.h"
#include "adapters/linux/port_facts.h"

class LineFile {
  public:
    /// @param fileName  for messages
    /// @throws std::runtime_error "file:line: reason"
    LineFile(const std::string& text, const std::string& fileName);

    /// Sets what the file has for a port: first what is for all, then each entry that matches.
    /// @throws std::runtime_error "file:line: reason" when one of these is no line
    void Apply(const PortFacts& facts, const std::string& deviceName, LineSettings& settings) const;

  private:
    struct Line {
        std::string text;
        std::string where; // "file:line"
    };

    struct Entry {
        std::string id; // empty: any, as with all of these
        std::string serial;
        std::string place;
        std::string node;
        std::string name;
        long interfaceNumber = -1;
        Line line;
    };

    friend class LineFileReader;

    static bool IsMatch(const Entry& entry, const PortFacts& facts, const std::string& deviceName);
    static void Apply(const Line& line, LineSettings& settings);

    Line m_ForAll;
    std::vector<Entry> m_Entries;
};

#endif

// SPDX-License-Identifier: MIT
#include <utility>

#include "tests/proof/model/model.h"

namespace model {

// A line: the time, the level, the text as it is (with its own line end, if it has one), a line end.
void Model::Log(const std::string& text) { m_Log += "[TIME] INFO:" + text + "\n"; }

void Model::LogError(const std::string& text) { m_Log += "[TIME] ERRO:" + text + "\n"; }

// A port's name is a format without arguments: two per cent signs are one, and a conversion, which
// finds no argument, is written as it stands.
void Model::LogName(const std::string& name) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        text += name[i];
        if (name[i] == '%' && i + 1 < name.size() && name[i + 1] == '%') {
            ++i;
        }
    }
    Log(text);
}

void Model::Trace(const std::string& line) { m_Trace += line + "\n"; }

std::string Model::TakeLog() { return std::exchange(m_Log, {}); }

std::string Model::TakeTrace() { return std::exchange(m_Trace, {}); }

} // namespace model

// SPDX-License-Identifier: MIT
#include "tools/kovasctl/term_keys.h"

#include <cctype>

namespace {

using Command = TermKeys::Command;

struct Key {
    char letter;
    Command command;
    const char* text;
};

constexpr Key kKeys[] = {
    {'q', Command::Quit, "quit"},
    {'e', Command::ToggleEcho, "local echo on, off"},
    {'h', Command::ToggleHex, "hexadecimal display on, off"},
    {'b', Command::Break, "send a break"},
    {'?', Command::Help, "this help"},
};

const Key* Find(char typed) {
    for (const Key& key : kKeys) {
        if (key.letter == std::tolower(static_cast<unsigned char>(typed))) {
            return &key;
        }
    }
    return nullptr;
}

} // namespace

std::string TermKeys::Typed(const std::string& bytes,
                            const std::function<void(Command)>& onCommand) {
    std::string data;
    for (const char typed : bytes) {
        if (!m_IsAfterEscape && typed == EscapeKey()) {
            m_IsAfterEscape = true;
            continue;
        }
        if (!m_IsAfterEscape || typed == EscapeKey()) {
            data += typed;
        } else {
            const Key* key = Find(typed);
            onCommand(key == nullptr ? Command::Help : key->command);
        }
        m_IsAfterEscape = false;
    }
    return data;
}

std::string TermKeys::KeyName() const {
    return std::string("Ctrl-") +
           static_cast<char>(std::toupper(static_cast<unsigned char>(m_Letter)));
}

std::string TermKeys::Help() const {
    std::string text = "keys:";
    for (const Key& key : kKeys) {
        text += "\n  " + KeyName() + " " + key.letter + "  " + key.text;
    }
    return text + "\n  " + KeyName() + " " + KeyName() + "  send " + KeyName() + " itself";
}

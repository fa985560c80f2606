// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_TERM_KEYS_H
#define KOVASCTL_TERM_KEYS_H

#include <functional>
#include <string>

/// Tells what is typed for the port from what is typed for the terminal itself: commands are a
/// letter behind the escape key, which is a control key.
class TermKeys {
  public:
    enum class Command { Quit, ToggleEcho, ToggleHex, Break, Help };

    /// @param letter  of the control key: 't' for Ctrl-T
    explicit TermKeys(char letter) : m_Letter(letter) {}

    /// @return what is for the port; the escape key typed twice is itself
    std::string Typed(const std::string& bytes, const std::function<void(Command)>& onCommand);

    std::string KeyName() const; // "Ctrl-T"
    std::string Help() const;

  private:
    char EscapeKey() const { return static_cast<char>(m_Letter & 0x1f); }

    char m_Letter;
    bool m_IsAfterEscape = false;
};

#endif

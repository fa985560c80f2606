// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_RESOURCES_H
#define KOVASCTL_CONFORMANCE_RESOURCES_H

#include <map>
#include <string>

/// Open descriptors of this process, and what each refers to.
std::map<int, std::string> Descriptors();

/// What this process holds at a moment.
class Resources {
  public:
    /// Takes what is held now.
    Resources();

    /// What has come since: "thread 'x', descriptor 7 (/dev/null)"; empty when nothing has.
    std::string Excess() const;

  private:
    std::map<int, std::string> m_Threads; // and their names
    std::map<int, std::string> m_Descriptors;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_AT_FAR_END_H
#define KOVASMGR_ADAPTERS_VIRTUAL_AT_FAR_END_H

#include <string>

#include "adapters/virtual/ports/far_end.h"

/// Answers AT commands: "AT", "ATE0" and "ATE1" by itself, others from the scenario's table, and
/// the rest with ERROR. A command ends with CR; LF is ignored; case does not matter.
class AtFarEnd : public FarEnd {
  public:
    explicit AtFarEnd(const PortSpec& spec) : m_Spec(spec), m_Echo(spec.echo) {}

    std::string Take(const std::string& bytes) override;
    void Restart() override;

  private:
    std::string TakeByte(char byte);
    std::string Answer(const std::string& command);

    const PortSpec& m_Spec;
    bool m_Echo;
    bool m_TooLong = false;
    std::string m_Line;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_FAR_END_H
#define KOVASMGR_ADAPTERS_VIRTUAL_FAR_END_H

#include <memory>
#include <optional>
#include <string>

#include "adapters/virtual/language/scenario.h"

/// What a virtual device does at its end of a port. It knows nothing of terminals: bytes go in,
/// bytes come out.
///
/// Threads: one at a time.
class FarEnd {
  public:
    FarEnd() = default;
    virtual ~FarEnd() = default;
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    /// Takes what the host sent.
    /// @return what the far end sends back.
    virtual std::string Take(const std::string& bytes) = 0;

    /// Whether Take ever gives anything.
    virtual bool IsAnswering() const { return true; }

    /// Forgets what it has taken and not answered: the host opens the port anew.
    virtual void Restart() {}

    /// When Tick is to be called next, if ever.
    virtual std::optional<ScenarioTime> Due() const { return std::nullopt; }

    /// @return what the far end sends by itself.
    virtual std::string Tick(ScenarioTime) { return ""; }
};

/// The far end that a scenario asks for; null for one that is another program. One that only says
/// what the scenario's events and recordings let it say takes everything and is silent by itself.
/// @param spec  must outlive the far end
std::unique_ptr<FarEnd> MakeFarEnd(const PortSpec& spec, ScenarioTime now);

#endif

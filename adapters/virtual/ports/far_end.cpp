// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/far_end.h"

#include <algorithm>
#include <cstdint>

#include "adapters/virtual/ports/at_far_end.h"

namespace {

class SilentFarEnd : public FarEnd {
  public:
    std::string Take(const std::string&) override { return ""; }
    bool IsAnswering() const override { return false; }
};

class EchoFarEnd : public FarEnd {
  public:
    std::string Take(const std::string& bytes) override { return bytes; }
};

class PeriodicFarEnd : public FarEnd {
  public:
    PeriodicFarEnd(const PortSpec& spec, ScenarioTime now)
        : m_Spec(spec), m_Due(now + std::chrono::milliseconds(spec.everyMs)) {}

    std::string Take(const std::string&) override { return ""; }

    std::optional<ScenarioTime> Due() const override { return m_Due; }

    std::string Tick(ScenarioTime now) override {
        // What a stopped process missed is not made up for.
        m_Due = std::max(m_Due, now - Period()) + Period();
        return WithNumber(std::to_string(m_Number++));
    }

  private:
    ScenarioTime Period() const { return std::chrono::milliseconds(m_Spec.everyMs); }

    std::string WithNumber(const std::string& number) const {
        static constexpr const char* kPlace = "{n}";
        std::string text = m_Spec.send;
        for (size_t at = 0; (at = text.find(kPlace, at)) != std::string::npos;) {
            text.replace(at, 3, number);
            at += number.size();
        }
        return text;
    }

    const PortSpec& m_Spec;
    ScenarioTime m_Due;
    uint64_t m_Number = 1;
};

} // namespace

std::unique_ptr<FarEnd> MakeFarEnd(const PortSpec& spec, ScenarioTime now) {
    switch (spec.farEnd) {
    case FarEndKind::Silent:
    case FarEndKind::Scripted:
    case FarEndKind::Recording:
        return std::make_unique<SilentFarEnd>();
    case FarEndKind::Echo:
        return std::make_unique<EchoFarEnd>();
    case FarEndKind::At:
        return std::make_unique<AtFarEnd>(spec);
    case FarEndKind::Periodic:
        return std::make_unique<PeriodicFarEnd>(spec, now);
    case FarEndKind::External:
        break;
    }
    return nullptr;
}

// SPDX-License-Identifier: MIT
#include "adapters/virtual/far_end.h"

#include <algorithm>
#include <cstdint>

#include "adapters/virtual/at_far_end.h"

namespace {

class SilentFarEnd : public FarEnd {
  public:
    std::string Take(const std::string&) override { return ""; }
};

class EchoFarEnd : public FarEnd {
  public:
    std::string Take(const std::string& bytes) override { return bytes; }
};

class PeriodicFarEnd : public FarEnd {
  public:
    PeriodicFarEnd(const PortSpec& spec, Instant now)
        : m_Spec(spec), m_Due(now + std::chrono::milliseconds(spec.everyMs)) {}

    std::string Take(const std::string&) override { return ""; }

    std::optional<Instant> Due() const override { return m_Due; }

    std::string Tick(Instant now) override {
        // What a stopped process missed is not made up for.
        m_Due = std::max(m_Due, now - Period()) + Period();
        return WithNumber(std::to_string(m_Number++));
    }

  private:
    std::chrono::milliseconds Period() const { return std::chrono::milliseconds(m_Spec.everyMs); }

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
    Instant m_Due;
    uint64_t m_Number = 1;
};

} // namespace

std::unique_ptr<FarEnd> MakeFarEnd(const PortSpec& spec, FarEnd::Instant now) {
    switch (spec.farEnd) {
    case FarEndKind::Silent:
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

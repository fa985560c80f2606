// SPDX-License-Identifier: MIT
#include "adapters/shared/answer_book.h"

#include <algorithm>
#include <utility>

namespace {

// A listener that blocks for long cannot make the queue grow for ever.
constexpr size_t kMaxSteps = 64;

} // namespace

uint64_t AnswerBook::SetTruth(PortTable truth, Instant now) {
    m_Truth = std::make_shared<const PortTable>(std::move(truth));
    const uint64_t ticket = ++m_LastTicket;
    if (m_Telling) {
        PlanSteps(ticket, now);
    }
    return ticket;
}

void AnswerBook::StartTelling(Instant now) {
    if (m_Telling) {
        return;
    }
    m_Telling = true;
    if (m_LastAnswer == nullptr) {
        m_LastAnswer = Truth();
    }
    PlanSteps(++m_LastTicket, now);
}

void AnswerBook::StopTelling() {
    m_Telling = false;
    m_Steps.clear();
    m_LastAnswer.reset();
}

void AnswerBook::Clear() {
    StopTelling();
    m_Current.clear();
    m_Truth.reset();
}

AnswerBook::Instant AnswerBook::FirstStepDue() const {
    const Step& step = m_Steps.front();
    const Instant due = std::min(step.lastEvent + kQuiet, step.firstEvent + kLongest);
    return m_Steps.size() > 1 ? step.firstEvent : due;
}

_OS_ADAPT_DEVICESTATUS_TYPE AnswerBook::BeginStep() {
    m_Current.splice(m_Current.begin(), m_Steps, m_Steps.begin());
    return m_Current.front().status;
}

// An enumeration cannot fail while a step is told, so what was told counts as answered.
void AnswerBook::EndStep() {
    if (m_Telling && !m_Current.empty()) {
        m_LastAnswer = m_Current.front().table;
    }
    m_Current.clear();
}

std::shared_ptr<const PortTable> AnswerBook::Answer() {
    if (!m_Telling) {
        m_LastAnswer = m_Current.empty() ? Truth() : m_Current.front().table;
    }
    return m_Current.empty() ? m_LastAnswer : m_Current.front().table;
}

bool AnswerBook::IsTold(uint64_t ticket) const {
    if (!m_Telling) {
        return true;
    }
    const std::list<Step>& next = m_Current.empty() ? m_Steps : m_Current;
    return next.empty() || next.front().firstTicket > ticket;
}

const std::shared_ptr<const PortTable>& AnswerBook::Truth() {
    if (m_Truth == nullptr) {
        m_Truth = std::make_shared<const PortTable>();
    }
    return m_Truth;
}

const PortTable& AnswerBook::LastPlanned() const {
    if (!m_Steps.empty()) {
        return *m_Steps.back().table;
    }
    return m_Current.empty() ? *m_LastAnswer : *m_Current.front().table;
}

void AnswerBook::PlanSteps(uint64_t ticket, Instant now) {
    auto left = std::make_shared<const PortTable>(CommonPart(LastPlanned(), *Truth()));
    const size_t kept = CountPorts(*left);
    if (kept != CountPorts(LastPlanned())) {
        AddEvent(OS_ADAPT_DEVICE_PULLOUT, std::move(left), ticket, now);
    }
    if (kept != CountPorts(*m_Truth)) {
        AddEvent(OS_ADAPT_DEVICE_INSERT, m_Truth, ticket, now);
    }
    if (m_Steps.size() > kMaxSteps) {
        CollapseSteps(now);
    }
}

void AnswerBook::AddEvent(_OS_ADAPT_DEVICESTATUS_TYPE status,
                          std::shared_ptr<const PortTable> table, uint64_t ticket, Instant now) {
    if (!m_Steps.empty() && m_Steps.back().status == status) {
        m_Steps.back().table = std::move(table);
        m_Steps.back().lastEvent = now;
        return;
    }
    m_Steps.push_back(Step{status, std::move(table), ticket, now, now});
}

// Drops the history and goes straight from the last answer to what is true.
void AnswerBook::CollapseSteps(Instant now) {
    const uint64_t ticket = m_Steps.front().firstTicket;
    m_Steps.clear();
    PlanSteps(ticket, now);
}

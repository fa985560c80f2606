// SPDX-License-Identifier: MIT
#include "tests/proof/model/decoder.h"

#include <utility>

namespace model {

Sequence Decoder::Decode() {
    Add(Kind::kTable).table = m_Tables.Change();
    if (!m_Bytes.OneIn(16)) {
        Init();
    }
    while (!m_Bytes.IsEmpty()) {
        Step();
    }
    return std::move(m_Sequence);
}

void Decoder::Step() {
    struct Choice {
        int weight;
        Maker maker;
    };
    static constexpr Choice kChoices[] = {
        {40, &Decoder::Attach},    {20, &Decoder::Notice},    {28, &Decoder::Open},
        {12, &Decoder::Close},     {14, &Decoder::Write},     {2, &Decoder::PortState},
        {8, &Decoder::Enumerate},  {8, &Decoder::AddRead},    {22, &Decoder::Listen},
        {6, &Decoder::RemoveRead}, {9, &Decoder::AddState},   {4, &Decoder::RemoveState},
        {12, &Decoder::Sweep},     {3, &Decoder::Init},       {3, &Decoder::Release},
        {9, &Decoder::Result},     {7, &Decoder::NextHandle}, {3, &Decoder::WriteCount},
        {12, &Decoder::Data},      {14, &Decoder::Action},
    };
    int left = m_Bytes.Next();
    for (const Choice& choice : kChoices) {
        left -= choice.weight;
        if (left < 0) {
            (this->*choice.maker)();
            return;
        }
    }
    StepBare();
}

void Decoder::StepBare() {
    static constexpr Maker kMakers[] = {
        &Decoder::ReadHandle, &Decoder::ReleaseDevice, &Decoder::DeletePort, &Decoder::DeletePort,
        &Decoder::Missing,    &Decoder::SetInit,       &Decoder::SetRun};
    if (m_Host == Host::kBare) {
        (this->*m_Bytes.Pick(kMakers))();
    }
}

Operation& Decoder::Add(Kind kind, int number, int callback) {
    Operation operation;
    operation.kind = kind;
    operation.number = number;
    operation.callback = callback;
    m_Sequence.push_back(operation);
    return m_Sequence.back();
}

Sequence Decode(const std::vector<std::uint8_t>& bytes, Decoder::Host host) {
    return Decoder(ByteSource(bytes), host).Decode();
}

} // namespace model

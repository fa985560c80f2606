// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_DECODER_H
#define KOVASMGR_TESTS_PROOF_MODEL_DECODER_H

#include "tests/proof/model/byte_source.h"
#include "tests/proof/model/operation.h"
#include "tests/proof/model/table_decoder.h"

namespace model {

/// Makes a sequence of any bytes: few names and few numbers, so that what is odd happens often.
class Decoder {
  public:
    enum class Host {
        kBare,    ///< everything
        kThreaded ///< nothing that takes a running read thread its ground or its order
    };

    Decoder(ByteSource bytes, Host host) : m_Bytes(bytes), m_Host(host), m_Tables(m_Bytes) {}

    Sequence Decode();

  private:
    using Maker = void (Decoder::*)();

    void Step();
    void StepBare();

    // Each adds an operation, or a few that belong together (decoder_calls.cpp, decoder_script.cpp).
    void Init();
    void Release();
    void Open();
    void Close();
    void Write();
    void PortState();
    void Enumerate();
    void AddRead();
    void Listen();
    void RemoveRead();
    void AddState();
    void RemoveState();
    void Notice();
    void Sweep();
    void ReadHandle();
    void ReleaseDevice();
    void DeletePort();
    void Attach();
    void Result();
    void NextHandle();
    void WriteCount();
    void Data();
    void Missing();
    void Action();
    void SetInit();
    void SetRun();

    int PortNumber();
    void AddData();
    int Handle();
    Operation WriteOperation();
    Operation ReadAction(int callback);
    Operation StateAction(int callback);

    Operation& Add(Kind kind, int number = 0, int callback = 0);

    ByteSource m_Bytes;
    Host m_Host;
    TableDecoder m_Tables;
    Sequence m_Sequence;
    int m_Listening = 1; // the port that the host listens to
};

Sequence Decode(const std::vector<std::uint8_t>& bytes, Decoder::Host host = Decoder::Host::kBare);

} // namespace model

#endif

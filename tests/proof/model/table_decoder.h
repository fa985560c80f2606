// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_TABLE_DECODER_H
#define KOVASMGR_TESTS_PROOF_MODEL_TABLE_DECODER_H

#include "tests/proof/model/byte_source.h"
#include "tests/proof/model/operation.h"

namespace model {

/// What is attached, changed a little at a time.
class TableDecoder {
  public:
    explicit TableDecoder(ByteSource& bytes) : m_Bytes(bytes) {}

    /// The table after the next change.
    const Table& Change();

    /// A device's name as tables use them.
    std::string DeviceName();

  private:
    using Changer = void (TableDecoder::*)();

    void Replace();
    void AddPort();
    void RemovePort();
    void RenamePort();
    void MovePort();
    void AddDevice();
    void RemoveDevice();
    void TurnRound();
    void MiscountPorts();
    void MiscountDevices();
    void CountTruly();
    void Crowd();

    DeviceEntry NewDevice(int ports);
    PortEntry NewPort();
    std::string PortName();
    DeviceEntry* AnyDevice();

    ByteSource& m_Bytes;
    Table m_Table;
};

} // namespace model

#endif

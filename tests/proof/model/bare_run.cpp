// SPDX-License-Identifier: MIT
#include "tests/proof/model/bare_run.h"

#include "tests/proof/model/model.h"
#include "tests/proof/model/real_manager.h"

namespace model {

std::optional<Difference> BareRun::Compare(const Sequence& sequence) {
    RealManager manager(m_Scratch.LogDirectory(), m_Trace);
    Model model(Model::Start::kScanOnly, m_Quirks);
    m_Steps += static_cast<long>(sequence.size());
    return model::Compare(sequence, manager, model);
}

} // namespace model

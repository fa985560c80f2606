// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tests/proof/model/model.h"

namespace model {
namespace {

// At the end, each once.
void Add(std::vector<int>& callbacks, int callback) {
    if (std::find(callbacks.begin(), callbacks.end(), callback) == callbacks.end()) {
        callbacks.push_back(callback);
    }
}

// The others keep their order.
void Remove(std::vector<int>& callbacks, int callback) {
    const auto found = std::find(callbacks.begin(), callbacks.end(), callback);
    if (found != callbacks.end()) {
        callbacks.erase(found);
    }
}

} // namespace

int Model::CheckRead(int id) {
    if (!m_State.isInit) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    return FindPort(id) == nullptr ? KOVAMGR_ERR_PARAM : KOVAMGR_OK;
}

int Model::AddRead(int id, int callback) {
    const int code = CheckRead(id);
    if (code == KOVAMGR_OK) {
        Add(FindPort(id)->readCallbacks, callback);
    }
    return code;
}

int Model::RemoveRead(int id, int callback) {
    const int code = CheckRead(id);
    if (code == KOVAMGR_OK) {
        Remove(FindPort(id)->readCallbacks, callback);
    }
    return code;
}

int Model::AddState(int callback) {
    if (!m_State.isInit) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    Add(m_State.stateCallbacks, callback);
    return KOVAMGR_OK;
}

// Also on a manager that is not initialised.
int Model::RemoveState(int callback) {
    Remove(m_State.stateCallbacks, callback);
    return KOVAMGR_OK;
}

} // namespace model

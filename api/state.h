// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_API_STATE_H
#define KOVASMGR_API_STATE_H

#include "manager/port_manager.h"

/// The manager that the exported functions forward to: null until KOVAMGR_Init has succeeded, and
/// again after KOVAMGR_Release. Changed by those two only, which run alone.
extern CKOVASMgrPort* g_pMgrPort;

#endif

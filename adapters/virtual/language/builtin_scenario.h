// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_BUILTIN_SCENARIO_H
#define KOVASMGR_ADAPTERS_VIRTUAL_BUILTIN_SCENARIO_H

/// The text of scenarios/builtin.toml, put in at build time.
extern const char* const kBuiltinScenario;

#endif

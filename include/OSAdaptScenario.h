/* SPDX-License-Identifier: MIT */
/*
 * OSAdaptScenario: how a program checks a scenario before a host runs with it. The virtual adapter
 * exports the function below besides the seven that every adapter has; others do not.
 *
 * GETTING AT IT. The adapter is loaded by its file; a host need not run:
 *
 *     void* adapter = dlopen("<directory of the virtual adapter>/libOSAdapt.so", RTLD_NOW);
 *     OSADAPT_CHECK_SCENARIO check =
 *         adapter == NULL ? NULL
 *                         : (OSADAPT_CHECK_SCENARIO)dlsym(adapter, OSADAPT_CHECK_SCENARIO_NAME);
 *     ...
 *     if (adapter != NULL) dlclose(adapter);
 *
 * THE FILE is what the environment variable KOVASMGR_VIRTUAL_SCENARIO may name: a scenario, whose
 * keys and sentences adapters/virtual/README.md explains, or a recording.
 */
#ifndef OSADAPT_SCENARIO_H
#define OSADAPT_SCENARIO_H

#include "KOVASMgrExport.h"

/* The function's name, for dlsym. */
#define OSADAPT_CHECK_SCENARIO_NAME "OSADAPT_CheckScenario"

KOVASMGR_BEGIN_DECLS

/*
 * Reads a scenario or a recording as the adapter does when it is first used, and says what the
 * first mistake in it is. Nothing is plugged in, and the environment is not asked.
 *
 * file    the file's path
 * reason  receives "file:line: reason", terminated and cut to size; "" when there is no mistake.
 *         Line 0 is that of a file which cannot be read. Bytes of the file that are control
 *         characters are '?'. May be null.
 * size    of reason in bytes; 0 or less stores nothing
 *
 * Returns:
 *   30001 (failed)   file is null, the file cannot be read, or there is a mistake in it.
 *   30000 (success)  otherwise; a host with this file has the devices that it describes.
 *
 * Threads: any, also while a host uses the adapter.
 *
 * Note: a scenario that names recordings is checked together with them. What the system refuses
 * later, terminals or descriptors of which there are too few, no check can tell.
 */
KOVASMGR_API int OSADAPT_CheckScenario(const char* file, char* reason, long size);

/* What dlsym gives. */
typedef int (*OSADAPT_CHECK_SCENARIO)(const char* file, char* reason, long size);

KOVASMGR_END_DECLS

#endif

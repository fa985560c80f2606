/* SPDX-License-Identifier: MIT */
/* What the guide's programs share. They run on the virtual adapter's built-in devices. */
#ifndef KOVASMGR_EXAMPLES_GUIDE_H
#define KOVASMGR_EXAMPLES_GUIDE_H

#include <KOVASMgr.h>

#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* Ends the program when something is not as the guide says. */
static inline void Check(int isTrue, const char* what) {
    if (!isTrue) {
        fprintf(stderr, "not so: %s\n", what);
        exit(EXIT_FAILURE);
    }
}

/* The identifier of the port with this name; -1 when it is not there, or the library is being
 * released. */
static inline int FindPort(const char* name) {
    int found = -1;
    _KOVAMGR_DEVICEINFOLIST* list = malloc(sizeof(*list)); /* 280 KiB: not for the stack */
    if (list == NULL || KOVAMGR_EnumeratePortInfo(list) != KOVAMGR_OK) {
        free(list);
        return -1;
    }
    for (uint32_t d = 0; d < list->nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
        for (uint32_t p = 0; p < list->stDevice[d].nPortCount; ++p) {
            if (strcmp(list->stDevice[d].stPort[p].szPortName, name) == 0) {
                found = list->stDevice[d].stPort[p].nPortID;
            }
        }
    }
    free(list);
    return found;
}

/* Waits for a callback's sem_post, ten seconds at most. */
static inline void WaitFor(sem_t* event, const char* what) {
    struct timespec end;
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += 10;
    Check(sem_timedwait(event, &end) == 0, what);
}

#endif

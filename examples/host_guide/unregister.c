/* SPDX-License-Identifier: MIT */
/* Once an un-registration has returned, its callback does not run any more: what it uses may go. */
#include "guide.h"

#include <pthread.h>

typedef struct Statistics {
    pthread_mutex_t mutex;
    long bytes;
} Statistics;

static Statistics* s_statistics;
static sem_t s_hasArrived;

static void OnData(void* data, int length) {
    (void)data;
    pthread_mutex_lock(&s_statistics->mutex);
    s_statistics->bytes += length;
    pthread_mutex_unlock(&s_statistics->mutex);
    sem_post(&s_hasArrived);
}

int main(void) {
    sem_init(&s_hasArrived, 0, 0);
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-sensor-0");
    s_statistics = calloc(1, sizeof *s_statistics);
    Check(s_statistics != NULL && pthread_mutex_init(&s_statistics->mutex, NULL) == 0, "memory");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened");
    WaitFor(&s_hasArrived, "data arrive");

    pthread_mutex_lock(&s_statistics->mutex);
    const long bytes = s_statistics->bytes;
    pthread_mutex_unlock(&s_statistics->mutex);
    /* Not with the mutex held: the un-registration waits for the callback, which waits for it. */
    Check(KOVAMGR_UnRegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "removed");
    pthread_mutex_destroy(&s_statistics->mutex);
    free(s_statistics); /* the port is still open and data still arrive; they are discarded */

    printf("%ld bytes at least\n", bytes);
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

/* SPDX-License-Identifier: MIT */
/* A callback holds up every port: it hands over what takes long to a thread of the host's. */
#include "guide.h"

#include <pthread.h>

enum { kReadings = 5 };

static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER; /* held for a copy, never for longer */
static pthread_cond_t s_hasMore = PTHREAD_COND_INITIALIZER;
static char s_bytes[65536]; /* guarded by s_mutex */
static size_t s_count;

static void OnData(void* data, int length) {
    pthread_mutex_lock(&s_mutex);
    const size_t room = sizeof s_bytes - s_count;
    const size_t taken = (size_t)length < room ? (size_t)length : room; /* the rest is lost */
    memcpy(s_bytes + s_count, data, taken);
    s_count += taken;
    pthread_cond_signal(&s_hasMore);
    pthread_mutex_unlock(&s_mutex);
}

/* Takes everything that has arrived. */
static size_t Take(char* bytes) {
    pthread_mutex_lock(&s_mutex);
    while (s_count == 0) {
        pthread_cond_wait(&s_hasMore, &s_mutex);
    }
    const size_t count = s_count;
    memcpy(bytes, s_bytes, count);
    s_count = 0;
    pthread_mutex_unlock(&s_mutex);
    return count;
}

int main(void) {
    static char bytes[sizeof s_bytes];
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-sensor-0");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened");
    for (int lines = 0; lines < kReadings;) {
        const size_t count = Take(bytes);
        const struct timespec slowWork = {0, 150000000}; /* while this lasts, reading goes on */
        nanosleep(&slowWork, NULL);
        for (size_t i = 0; i < count; ++i) {
            lines += bytes[i] == '\n';
        }
        fwrite(bytes, 1, count, stdout);
    }
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

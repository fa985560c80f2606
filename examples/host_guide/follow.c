/* SPDX-License-Identifier: MIT */
/* Follows a device that comes and goes: it is known by its name, its port has another identifier
 * each time.
 *
 *     follow COUNT    COUNT: how often it is connected before the program ends
 */
#include "guide.h"

#include <pthread.h>

static const char kPort[] = "virtual-sensor-0";
static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER; /* one look at a time; no read callback
                                                               waits for it */
static int s_port = -1;                                     /* guarded by s_mutex */
static sem_t s_isConnected;

static void OnData(void* data, int length) {
    (void)data;
    (void)length;
}

static void Connect(int port) {
    /* Both may fail when the device is gone again already; there is another notice then. */
    if (KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK &&
        KOVAMGR_Open(port) == KOVAMGR_OK) {
        puts("connected");
        fflush(stdout);
        sem_post(&s_isConnected);
    }
}

/* With s_mutex held. */
static void Compare(int port) {
    if (port == s_port) {
        return; /* it was another device */
    }
    if (port < 0) {
        puts("gone"); /* the library has closed it and forgotten its callbacks */
        fflush(stdout);
    } else {
        Connect(port);
    }
    s_port = port;
}

static void Look(void) {
    pthread_mutex_lock(&s_mutex);
    Compare(FindPort(kPort));
    pthread_mutex_unlock(&s_mutex);
}

/* One notice may stand for several devices, and says nothing of which: look what is there now. */
static void OnDevices(_KOVAMGR_DEV_STATE_TYPE_ state) {
    (void)state;
    Look();
}

int main(int argc, char** argv) {
    const long count = argc == 2 ? strtol(argv[1], NULL, 10) : 1;
    sem_init(&s_isConnected, 0, 0);
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    /* Registered first: a device that comes between the two is not missed. */
    Check(KOVAMGR_RegisterDeviceStateProcessCallback(OnDevices) == KOVAMGR_OK, "registered");
    Look();
    for (long i = 0; i < count; ++i) {
        while (sem_wait(&s_isConnected) != 0) {
        }
    }
    KOVAMGR_Release(); /* waits for a notice under way */
    return EXIT_SUCCESS;
}

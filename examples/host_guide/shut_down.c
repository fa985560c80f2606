/* SPDX-License-Identifier: MIT */
/* Ends on SIGINT or SIGTERM by way of KOVAMGR_Release: the main thread waits for the signal, no
 * handler and no callback does the work. */
#include "guide.h"

#include <pthread.h>
#include <signal.h>

static void OnData(void* data, int length) {
    fwrite(data, 1, (size_t)length, stdout);
    fflush(stdout);
}

int main(void) {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, NULL); /* before the library's threads, which inherit it */

    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-sensor-0");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened");

    int number = 0;
    sigwait(&ends, &number);

    /* At most 7 seconds, also when a callback hangs. Closes what is open, removes what is registered. */
    Check(KOVAMGR_Release() == KOVAMGR_OK, "released");
    puts("released"); /* no callback runs any more */
    return EXIT_SUCCESS;
}

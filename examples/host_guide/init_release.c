/* SPDX-License-Identifier: MIT */
/* One thread initialises and releases; the others have left the library by then. */
#include "guide.h"

#include <pthread.h>

static void* Work(void* unused) {
    (void)unused;
    Check(FindPort("virtual-modem-0") >= 0, "any thread may use the library");
    return NULL;
}

int main(void) {
    Check(KOVAMGR_Open(1) == KOVAMGR_ERR_NOT_INIT, "nothing works before KOVAMGR_Init");
    Check(KOVAMGR_Init("/no/such/directory") == KOVAMGR_ERR_PARAM, "the directory must exist");
    for (int life = 0; life < 2; ++life) {
        Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised, see KOVASMgr.log if not");
        Check(KOVAMGR_Init(".") == KOVAMGR_OK, "once more changes nothing");

        pthread_t worker;
        Check(pthread_create(&worker, NULL, Work, NULL) == 0, "a thread");
        pthread_join(worker, NULL); /* before the release, not after it */

        Check(KOVAMGR_Release() == KOVAMGR_OK, "released, once for both");
        Check(KOVAMGR_Open(1) == KOVAMGR_ERR_NOT_INIT, "nothing works after KOVAMGR_Release");
    }
    return EXIT_SUCCESS;
}

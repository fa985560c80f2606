/* SPDX-License-Identifier: MIT */
/* A callback is registered before its port is opened: what arrives without one is discarded. */
#include "guide.h"

static sem_t s_hasArrived;
static char s_first;

static void OnData(void* data, int length) {
    if (s_first == '\0' && length > 0) {
        s_first = *(const char*)data;
        sem_post(&s_hasArrived);
    }
}

int main(void) {
    sem_init(&s_hasArrived, 0, 0);
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-modem-0");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "registered first");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "then opened");
    Check(KOVAMGR_Write(port, "ATI\r", 4, 0, NULL) == 4, "then asked");
    WaitFor(&s_hasArrived, "something arrives");
    Check(s_first == 'A', "nothing of the answer is missing");

    /* The callback outlasts a closing, but not the device. */
    Check(KOVAMGR_Close(port) == KOVAMGR_OK, "closed");
    s_first = '\0'; /* nobody else uses it: after KOVAMGR_Close no callback of the port runs */
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened again");
    Check(KOVAMGR_Write(port, "AT\r", 3, 0, NULL) == 3, "asked again");
    WaitFor(&s_hasArrived, "the callback is still registered");
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

/* SPDX-License-Identifier: MIT */
/* From a read callback a host may write, open, close and list; not initialise or release, and not
 * touch the device-state callbacks. */
#include "guide.h"

static int s_sensor;
static int s_modem;
static sem_t s_hasAnswered;

static void OnModem(void* data, int length) {
    if (memchr(data, 'K', (size_t)length) != NULL) { /* of "OK" */
        sem_post(&s_hasAnswered);
    }
}

static void OnReading(void* data, int length) {
    (void)data;
    (void)length;
    Check(KOVAMGR_Close(s_sensor) == KOVAMGR_OK, "a callback closes its own port");
    Check(KOVAMGR_Open(s_modem) == KOVAMGR_OK, "and opens another one");
    Check(KOVAMGR_Write(s_modem, "AT\r", 3, 0, NULL) == 3, "and writes to it");
    Check(KOVAMGR_UnRegisterCommDataReadCallback(OnReading, s_sensor) == KOVAMGR_OK,
          "and removes itself");
}

int main(void) {
    sem_init(&s_hasAnswered, 0, 0);
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    s_sensor = FindPort("virtual-sensor-0");
    s_modem = FindPort("virtual-modem-0");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnModem, s_modem) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnReading, s_sensor) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_Open(s_sensor) == KOVAMGR_OK, "opened");
    WaitFor(&s_hasAnswered, "the modem answers");
    Check(KOVAMGR_Write(s_sensor, "x", 1, 0, NULL) == KOVAMGR_ERR_NO_HANDLE,
          "the sensor is closed");
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

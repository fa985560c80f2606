/* SPDX-License-Identifier: MIT */
/* Lists the devices, opens the first port, sends a line and shows what comes back. */
#include <KOVASMgr.h>

#include <stdio.h>
#include <string.h>
#include <unistd.h>

static void OnData(void* data, int length) /* on the read thread */
{
    fwrite(data, 1, (size_t)length, stdout);
    fflush(stdout);
}

static void OnDevices(_KOVAMGR_DEV_STATE_TYPE_ state) /* on the adapter's thread */
{
    puts(state == KOVAMGR_DEVICE_INSERT ? "a device was inserted" : "a device was pulled out");
}

/* Returns the first port's identifier, or -1. */
static int ListPorts(void) {
    static _KOVAMGR_DEVICEINFOLIST list; /* 280 KiB: not for the stack */
    int first = -1;
    if (KOVAMGR_EnumeratePortInfo(&list) != KOVAMGR_OK) {
        return -1;
    }
    for (uint32_t d = 0; d < list.nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
        const _KOVAMGR_DEVICEINFO* device = &list.stDevice[d];
        printf("%s (%s)\n", device->szDeviceName, device->szDeviceText);
        for (uint32_t p = 0; p < device->nPortCount; ++p) {
            printf("  %d: %s\n", (int)device->stPort[p].nPortID, device->stPort[p].szPortName);
            first = first < 0 ? (int)device->stPort[p].nPortID : first;
        }
    }
    return first;
}

static int Fail(const char* what, long code) {
    fprintf(stderr, "quick_start: %s (%ld), see KOVASMgr.log\n", what, code);
    KOVAMGR_Release();
    return 1;
}

int main(void) {
    const char text[] = "ATI\r";
    const int length = (int)strlen(text); /* at most 16,384 bytes a call */
    long reason = 0;
    int result = KOVAMGR_Init("."); /* KOVASMgr.log goes here, libOSAdapt.so is loaded from here */
    if (result != KOVAMGR_OK) {
        return Fail("no adapter", result);
    }
    int port = ListPorts();
    if (port < 0) {
        return Fail("no port", port);
    }
    KOVAMGR_RegisterDeviceStateProcessCallback(OnDevices);
    KOVAMGR_RegisterCommDataReadCallback(OnData, port);
    if ((result = KOVAMGR_Open(port)) != KOVAMGR_OK) {
        return Fail("port not opened", result);
    }
    if (KOVAMGR_Write(port, text, length, 0, &reason) != length) {
        return Fail("line not sent", reason);
    }
    sleep(1); /* the answer arrives through OnData */
    KOVAMGR_Release();
    return 0;
}

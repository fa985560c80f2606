/* SPDX-License-Identifier: MIT */
/* Lists the devices with their ports, or says that there are none. */
#include <KOVASMgr.h>

#include <stdio.h>
#include <stdlib.h>

static void PrintDevice(const _KOVAMGR_DEVICEINFO* device) {
    printf("%s\n    %s\n", device->szDeviceName, device->szDeviceText);
    for (uint32_t p = 0; p < device->nPortCount && p < KOVAMGR_MAX_PORTS; ++p) {
        printf("    %s\n", device->stPort[p].szPortName);
    }
}

int main(int argc, char** argv) {
    const char* logDirectory = argc > 1 ? argv[1] : ".";
    int result = KOVAMGR_Init(logDirectory);
    _KOVAMGR_DEVICEINFOLIST* list = malloc(sizeof(*list)); /* 280 KiB: not for the stack */
    if (result == KOVAMGR_OK && list != NULL) {
        result = KOVAMGR_EnumeratePortInfo(list);
    }
    if (result != KOVAMGR_OK || list == NULL) {
        fprintf(stderr, "list_ports: no list (%d), see %s/KOVASMgr.log\n", result, logDirectory);
        KOVAMGR_Release();
        free(list);
        return 1;
    }
    for (uint32_t d = 0; d < list->nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
        PrintDevice(&list->stDevice[d]);
    }
    if (list->nDeviceCount == 0) {
        puts("This machine has no serial ports.");
    }
    KOVAMGR_Release();
    free(list);
    return 0;
}

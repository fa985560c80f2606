/* SPDX-License-Identifier: MIT */
/* Prints what a C host sees of the records and numbers of the interface. */
#include <KOVASMgr.h>
#include <OSAdapt.h>

#include <stddef.h>
#include <stdio.h>

#define SIZE(type) printf(#type " %zu\n", sizeof(type))
#define FIELD(type, field)                                                                         \
    printf(#type "." #field " %zu %zu\n", offsetof(type, field), sizeof(((type*)0)->field))
#define NUMBER(name) printf(#name " %ld\n", (long)(name))

static void PrintHostRecords(void) {
    SIZE(_KOVAMGR_DEVICEINFOLIST);
    FIELD(_KOVAMGR_DEVICEINFOLIST, nDeviceCount);
    FIELD(_KOVAMGR_DEVICEINFOLIST, stDevice);
    SIZE(_KOVAMGR_DEVICEINFO);
    FIELD(_KOVAMGR_DEVICEINFO, szDeviceName);
    FIELD(_KOVAMGR_DEVICEINFO, nPortCount);
    FIELD(_KOVAMGR_DEVICEINFO, stPort);
    FIELD(_KOVAMGR_DEVICEINFO, szDeviceText);
    SIZE(_KOVAMGR_PORTINFO);
    FIELD(_KOVAMGR_PORTINFO, szPortName);
    FIELD(_KOVAMGR_PORTINFO, nPortID);
    FIELD(_KOVAMGR_PORTINFO, nPortType);
    SIZE(_KOVAMGR_DEV_STATE_TYPE_);
    SIZE(_COMMAND_PRIORITY_TYPE_);
}

static void PrintAdapterRecords(void) {
    SIZE(_OS_ADAPT_DEVICEPORTLIST);
    FIELD(_OS_ADAPT_DEVICEPORTLIST, nDeviceCount);
    FIELD(_OS_ADAPT_DEVICEPORTLIST, stDevice);
    SIZE(_OS_ADAPT_DEVICEPORTINFO);
    FIELD(_OS_ADAPT_DEVICEPORTINFO, szDeviceName);
    FIELD(_OS_ADAPT_DEVICEPORTINFO, nPortCount);
    FIELD(_OS_ADAPT_DEVICEPORTINFO, stPort);
    FIELD(_OS_ADAPT_DEVICEPORTINFO, szDeviceText);
    SIZE(_OS_ADAPT_PORTINFO);
    FIELD(_OS_ADAPT_PORTINFO, szPortName);
    FIELD(_OS_ADAPT_PORTINFO, nPortID);
    FIELD(_OS_ADAPT_PORTINFO, nReserved);
    SIZE(_OS_ADAPT_DEVICESTATUS_TYPE);
}

static void PrintNumbers(void) {
    NUMBER(KOVAMGR_OK);
    NUMBER(KOVAMGR_ERR_PARAM);
    NUMBER(KOVAMGR_ERR_OSADAPT);
    NUMBER(KOVAMGR_ERR_NOT_INIT);
    NUMBER(KOVAMGR_ERR_NO_HANDLE);
    NUMBER(KOVAMGR_ERR_THREAD);
    NUMBER(KOVAMGR_PORT_STATE_READY);
    NUMBER(KOVAMGR_PORT_STATE_NOT_READY);
    NUMBER(KOVAMGR_PORT_TYPE_COMM);
    NUMBER(KOVAMGR_COMMAND_PRIORITY_NORMAL);
    NUMBER(KOVAMGR_DEVICE_INSERT);
    NUMBER(KOVAMGR_DEVICE_PULLOUT);
    NUMBER(OS_ADAPT_OK);
    NUMBER(OS_ADAPT_DEVICE_INSERT);
    NUMBER(OS_ADAPT_DEVICE_PULLOUT);
}

int main(void) {
    PrintHostRecords();
    PrintAdapterRecords();
    PrintNumbers();
    return 0;
}

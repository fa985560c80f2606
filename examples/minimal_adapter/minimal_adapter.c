/* SPDX-License-Identifier: MIT */
/*
 * The smallest adapter that keeps the contract of OSAdapt.h: one device with one port, whose far
 * end sends everything back. Copy it and put a device behind it.
 *
 * Nothing here blocks, so nothing can be cancelled half-way (R3), and nothing comes or goes, so
 * there are no notices (R2, R4 to R7, R16, R17).
 */
#include <pthread.h>
#include <string.h>

#include "KOVASMgrLog.h"
#include "OSAdapt.h"

static const char kPortName[] = "loopback";

static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER; /* guards everything below (R1) */
static int s_lastHandle = 0;                                /* grows only (R12) */
static int s_openHandle = OS_ADAPT_NO_HANDLE;
static unsigned char s_bytes[65536]; /* written and not yet read */
static size_t s_count = 0;

/* With s_mutex held. */
static int IsOpen(int handle) { return handle != OS_ADAPT_NO_HANDLE && handle == s_openHandle; }

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    return cb == NULL ? OS_ADAPT_FAILED : OS_ADAPT_OK;
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    (void)cb;
    return OS_ADAPT_OK;
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (which != OS_ADAPT_ENUM_ALL || list == NULL) {
        return OS_ADAPT_FAILED;
    }
    /* The list comes zeroed, so every text is terminated (R15). */
    _OS_ADAPT_DEVICEPORTINFO* device = &list->stDevice[0];
    strncpy(device->szDeviceName, "Loopback", sizeof device->szDeviceName - 1);
    strncpy(device->szDeviceText, "Sends everything back", sizeof device->szDeviceText - 1);
    strncpy(device->stPort[0].szPortName, kPortName, sizeof device->stPort[0].szPortName - 1);
    device->nPortCount = 1;
    list->nDeviceCount = 1;
    return OS_ADAPT_OK;
}

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    if (portName == NULL || handle == NULL || strcmp(portName, kPortName) != 0) {
        ERRO_LOG("minimal adapter: the only port is called '%s'", kPortName);
        return OS_ADAPT_FAILED;
    }
    pthread_mutex_lock(&s_mutex);
    s_openHandle = ++s_lastHandle; /* an old handle is closed by this (R13) */
    s_count = 0;
    *handle = s_openHandle;
    pthread_mutex_unlock(&s_mutex);
    return OS_ADAPT_OK;
}

int OS_ADAPT_ClosePort(int handle) {
    pthread_mutex_lock(&s_mutex);
    const int wasOpen = IsOpen(handle);
    if (wasOpen) {
        s_openHandle = OS_ADAPT_NO_HANDLE;
    }
    pthread_mutex_unlock(&s_mutex);
    return wasOpen ? OS_ADAPT_OK : OS_ADAPT_FAILED;
}

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    if (data == NULL || length < 0 || written == NULL) {
        return OS_ADAPT_FAILED;
    }
    pthread_mutex_lock(&s_mutex);
    const int isOpen = IsOpen(handle);
    if (isOpen) {
        /* What does not fit is not waited for: a short count is success (R10). */
        const size_t room = sizeof s_bytes - s_count;
        const size_t taken = (size_t)length < room ? (size_t)length : room;
        memcpy(s_bytes + s_count, data, taken);
        s_count += taken;
        *written = (long)taken;
    }
    pthread_mutex_unlock(&s_mutex);
    return isOpen ? OS_ADAPT_OK : OS_ADAPT_FAILED;
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    if (buffer == NULL || size <= 0 || read == NULL) {
        return OS_ADAPT_FAILED;
    }
    pthread_mutex_lock(&s_mutex);
    const int isOpen = IsOpen(handle);
    if (isOpen) {
        /* Also when there is nothing: the count is set on every success (R9). */
        const size_t given = (size_t)size < s_count ? (size_t)size : s_count;
        memcpy(buffer, s_bytes, given);
        memmove(s_bytes, s_bytes + given, s_count - given);
        s_count -= given;
        *read = (long)given;
    }
    pthread_mutex_unlock(&s_mutex);
    return isOpen ? OS_ADAPT_OK : OS_ADAPT_FAILED;
}

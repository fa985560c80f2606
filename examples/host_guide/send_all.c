/* SPDX-License-Identifier: MIT */
/* Sends a large amount: at most 16,384 bytes a call, and a short count is no error. */
#include "guide.h"

enum { kMaxWrite = 16384, kSize = 40000 };

/* Returns the bytes that were sent; *error is KOVAMGR_OK or why there are no more. */
static long SendAll(int port, const char* data, long size, long* error) {
    long sent = 0;
    *error = KOVAMGR_OK;
    while (sent < size) {
        const long rest = size - sent < kMaxWrite ? size - sent : kMaxWrite;
        long reason = KOVAMGR_OK;
        const int result = KOVAMGR_Write(port, data + sent, rest, 0, &reason);
        if (result < 0 || result > kMaxWrite) {
            *error = result < 0 ? reason : result; /* a code: no count is that large */
            return sent;
        }
        sent += result;
        if (result < rest) {
            return sent; /* the far end does not keep up: the caller decides whether to go on */
        }
    }
    return sent;
}

int main(void) {
    static const char data[kSize];
    long error = KOVAMGR_OK;
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-sensor-0");

    Check(SendAll(port, data, kSize, &error) == 0, "a closed port takes nothing");
    Check(error == KOVAMGR_ERR_NO_HANDLE, "and says so in place of a count");
    Check(SendAll(987654, data, kSize, &error) == 0, "an unknown one takes nothing");
    Check(error == KOVAMGR_ERR_PARAM, "and says so beside a -1");

    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened");
    Check(SendAll(port, data, kSize, &error) == kSize, "all is sent, in three calls");
    Check(error == KOVAMGR_OK, "without an error");
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

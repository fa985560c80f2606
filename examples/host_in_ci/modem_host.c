/* SPDX-License-Identifier: MIT */
/* A host as there are many: finds the modem, asks it for its revision, and does it again whenever the
 * modem has come back. It runs until it is told to end, and fails when it has not found the modem as
 * often as its argument says (without one: once). docs/test-your-host.md tests it. */
#include <KOVASMgr.h>

#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { kTries = 100, kAnswerSize = 1024 };

static volatile sig_atomic_t s_isTold; /* to end */
static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER;
static char s_answer[kAnswerSize]; /* guarded by the mutex, as its length is */
static size_t s_length;

static void OnSignal(int number) {
    (void)number;
    s_isTold = 1;
}

static void OnData(void* data, int length) /* on the read thread */
{
    pthread_mutex_lock(&s_mutex);
    if (s_length + (size_t)length < kAnswerSize) { /* too much is no answer */
        memcpy(s_answer + s_length, data, (size_t)length);
        s_length += (size_t)length;
        s_answer[s_length] = '\0';
    }
    pthread_mutex_unlock(&s_mutex);
}

static void ForgetAnswer(void) {
    pthread_mutex_lock(&s_mutex);
    s_length = 0;
    s_answer[0] = '\0';
    pthread_mutex_unlock(&s_mutex);
}

static int HasAnswer(const char* word) {
    pthread_mutex_lock(&s_mutex);
    const int isThere = strstr(s_answer, word) != NULL;
    pthread_mutex_unlock(&s_mutex);
    return isThere;
}

static void Pause(long milliseconds) {
    const struct timespec time = {0, milliseconds * 1000000};
    nanosleep(&time, NULL);
}

/* Sends a command and waits a second for a word; a device that is no modem never says it. */
static int Ask(int port, const char* command, const char* word) {
    const long size = (long)strlen(command);
    long reason = 0;
    ForgetAnswer();
    if (KOVAMGR_Write(port, command, size, 0, &reason) != size) {
        return 0;
    }
    for (int i = 0; i < kTries && !s_isTold; ++i) {
        if (HasAnswer(word)) {
            return 1;
        }
        Pause(10);
    }
    return 0;
}

static int IsModem(int port) {
    KOVAMGR_RegisterCommDataReadCallback(OnData, port);
    if (KOVAMGR_Open(port) == KOVAMGR_OK && Ask(port, "AT\r", "OK") &&
        Ask(port, "ATI\r", "Revision")) {
        return 1;
    }
    KOVAMGR_Close(port);
    KOVAMGR_UnRegisterCommDataReadCallback(OnData, port);
    return 0;
}

/* The port that answers as a modem does, or -1. With a port's identifier: that one, if it is listed. */
static int Find(int known) {
    static _KOVAMGR_DEVICEINFOLIST list; /* 280 KiB: not for the stack */
    if (KOVAMGR_EnumeratePortInfo(&list) != KOVAMGR_OK) {
        return -1;
    }
    for (uint32_t d = 0; d < list.nDeviceCount && d < KOVAMGR_MAX_DEVICES; ++d) {
        for (uint32_t p = 0; p < list.stDevice[d].nPortCount; ++p) {
            const int port = list.stDevice[d].stPort[p].nPortID;
            if (known >= 0 ? port == known : IsModem(port)) {
                return port;
            }
        }
    }
    return -1;
}

int main(int argc, char** argv) {
    const long wanted = argc > 1 ? strtol(argv[1], NULL, 10) : 1;
    long found = 0;
    int modem = -1;
    signal(SIGTERM, OnSignal);
    signal(SIGINT, OnSignal);
    if (KOVAMGR_Init(".") != KOVAMGR_OK) {
        fputs("modem_host: no adapter, see KOVASMgr.log\n", stderr);
        return EXIT_FAILURE;
    }
    while (!s_isTold) {
        const int before = modem;
        modem = Find(modem); /* an identifier is never another port's */
        if (before < 0 && modem >= 0) {
            printf("modem found, %ld of %ld\n", ++found, wanted);
            fflush(stdout);
        }
        Pause(100);
    }
    KOVAMGR_Release();
    return found == wanted ? EXIT_SUCCESS : EXIT_FAILURE;
}

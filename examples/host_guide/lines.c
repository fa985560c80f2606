/* SPDX-License-Identifier: MIT */
/* What arrives has no framing, and is valid during the call only: collect it until a line is whole. */
#include "guide.h"

static char s_line[256]; /* used on the read thread alone */
static size_t s_length;
static sem_t s_isWhole;

static void OnLine(const char* line) {
    Check(strncmp(line, "reading ", 8) == 0, "a line begins where the one before has ended");
    puts(line);
    sem_post(&s_isWhole);
}

static void OnData(void* data, int length) {
    const char* bytes = data;
    for (int i = 0; i < length; ++i) {
        if (bytes[i] == '\n') {
            s_line[s_length] = '\0';
            s_length = 0;
            OnLine(s_line);
        } else if (bytes[i] != '\r' && s_length < sizeof s_line - 1) {
            s_line[s_length++] = bytes[i];
        }
    }
}

int main(void) {
    sem_init(&s_isWhole, 0, 0);
    Check(KOVAMGR_Init(".") == KOVAMGR_OK, "initialised");
    const int port = FindPort("virtual-sensor-0");
    Check(KOVAMGR_RegisterCommDataReadCallback(OnData, port) == KOVAMGR_OK, "registered");
    Check(KOVAMGR_Open(port) == KOVAMGR_OK, "opened");
    for (int i = 0; i < 3; ++i) {
        WaitFor(&s_isWhole, "a line arrives");
    }
    KOVAMGR_Release();
    return EXIT_SUCCESS;
}

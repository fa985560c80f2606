// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_RESULT_CODE_H
#define KOVASCTL_RESULT_CODE_H

#include <string>

/// "KOVAMGR_ERR_OSADAPT (20002)"
std::string ResultCodeText(long code);

#endif

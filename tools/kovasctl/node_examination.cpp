// SPDX-License-Identifier: MIT
#include "tools/kovasctl/node_examination.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "tools/kovasctl/modem_manager.h"
#include "tools/kovasctl/node_access.h"
#include "tools/kovasctl/node_holders.h"

namespace {

void DescribeMissing(const std::string& node, int error, Findings& findings) {
    if (error == ENOENT || error == ENOTDIR) {
        findings.Problem(
            node, "the device is gone: there is no such node",
            "attach it again; 'kovasctl watch' tells when it comes, and under which name");
    } else {
        findings.Problem(node, std::string("the node cannot be looked at: ") + std::strerror(error),
                         "ls -ld " + node);
    }
}

} // namespace

void ExamineNode(const std::string& node, Findings& findings) {
    struct stat info {};
    if (stat(node.c_str(), &info) != 0) {
        DescribeMissing(node, errno, findings);
        return;
    }
    if (!S_ISCHR(info.st_mode)) {
        findings.Problem(node, "it is no device, but a file or a folder",
                         "remove it, and attach "
                         "the device again");
        return;
    }
    ExamineAccess(node, info, findings);
    ExamineHolders(node, info, findings);
    ExamineModemManager(node, info, findings);
}

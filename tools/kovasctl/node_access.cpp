// SPDX-License-Identifier: MIT
#include "tools/kovasctl/node_access.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace {

constexpr mode_t kGroupAccess = S_IRGRP | S_IWGRP;
constexpr mode_t kOtherAccess = S_IROTH | S_IWOTH;

std::string GroupName(gid_t id) {
    const group* entry = getgrgid(id);
    return entry == nullptr ? std::to_string(id) : entry->gr_name;
}

std::string UserName() {
    const passwd* entry = getpwuid(geteuid());
    return entry == nullptr ? std::to_string(geteuid()) : entry->pw_name;
}

bool Contains(const std::vector<gid_t>& groups, gid_t id) {
    return std::find(groups.begin(), groups.end(), id) != groups.end();
}

bool IsInGroupNow(gid_t id) {
    std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    if (getgroups(static_cast<int>(groups.size()), groups.data()) < 0) {
        groups.clear();
    }
    return getegid() == id || Contains(groups, id);
}

// What the system's list of users says counts for sessions that begin later.
bool IsInGroupFromNextSession(gid_t id) {
    constexpr int kMost = 1024;
    std::vector<gid_t> groups(kMost);
    int count = kMost;
    const passwd* entry = getpwuid(geteuid());
    if (entry == nullptr ||
        getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count) < 0) {
        return false;
    }
    groups.resize(static_cast<size_t>(count));
    return Contains(groups, id);
}

std::string ModeText(const struct stat& info) {
    const unsigned mode = info.st_mode & 07777U;
    std::string digits;
    for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        digits += static_cast<char>('0' + ((mode >> shift) & 7U));
    }
    return "mode " + digits + ", group " + GroupName(info.st_gid);
}

bool GivesAGroupAccess(const struct stat& info) {
    return info.st_gid != 0 && (info.st_mode & kGroupAccess) == kGroupAccess;
}

bool GivesAllAccess(const struct stat& info) {
    return (info.st_mode & kOtherAccess) == kOtherAccess;
}

// A rule for all nodes of this kind: ttyUSB0 is ttyUSB1 tomorrow.
std::string RuleCommand(const std::string& node) {
    const std::string name = std::filesystem::path(node).filename().string();
    const size_t digits = name.find_last_not_of("0123456789") + 1;
    return "echo 'SUBSYSTEM==\"tty\", KERNEL==\"" + name.substr(0, digits) +
           "[0-9]*\", GROUP=\"dialout\", MODE=\"0660\", TAG+=\"uaccess\"' | sudo tee "
           "/etc/udev/rules.d/70-kovasmgr.rules && sudo udevadm control --reload && sudo udevadm "
           "trigger --action=add --subsystem-match=tty";
}

void DescribeRefusal(const std::string& node, const struct stat& info, Findings& findings) {
    const std::string group = GroupName(info.st_gid);
    const std::string refusal = "permission denied (" + ModeText(info) + "): ";
    if (!GivesAGroupAccess(info)) {
        findings.Problem(node, refusal + "no access rule gives it to a group", RuleCommand(node));
    } else if (IsInGroupNow(info.st_gid)) {
        findings.Problem(node, refusal + "something else forbids it: a container or an access list",
                         "getfacl " + node);
    } else if (IsInGroupFromNextSession(info.st_gid)) {
        findings.Problem(node, refusal + "this login began before you joined the group",
                         "log in again, or: newgrp " + group);
    } else {
        findings.Problem(node, refusal + "you are not in the group",
                         "sudo usermod -aG " + group + " " + UserName() + ", then log in again");
    }
}

} // namespace

void ExamineAccess(const std::string& node, const struct stat& info, Findings& findings) {
    if (faccessat(AT_FDCWD, node.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
        DescribeRefusal(node, info, findings);
        return;
    }
    findings.Good(node, UserName() + " may open it (" + ModeText(info) + ")");
    if (geteuid() == 0 && !GivesAGroupAccess(info) && !GivesAllAccess(info)) {
        findings.Note(node, "nobody but root may: no access rule gives it to a group",
                      RuleCommand(node));
    }
}

// SPDX-License-Identifier: MIT
#include "adapters/linux/permission_text.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "adapters/shared/adapter_log.h"

namespace {

constexpr size_t kBufferSize = size_t{64} * 1024;
constexpr int kMaxGroups = 1024;
constexpr mode_t kGroupAccess = S_IRGRP | S_IWGRP;

std::string GroupName(gid_t group) {
    std::vector<char> buffer(kBufferSize);
    struct group entry {};
    struct group* found = nullptr;
    getgrgid_r(group, &entry, buffer.data(), buffer.size(), &found);
    return found == nullptr ? std::to_string(group) : Printable(found->gr_name);
}

struct User {
    std::string name; // empty when this user has none
    gid_t group = 0;
};

User ThisUser() {
    std::vector<char> buffer(kBufferSize);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found == nullptr ? User{} : User{found->pw_name, found->pw_gid};
}

bool IsInGroupNow(gid_t group) {
    std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<size_t>(std::max(count, 0)));
    return getegid() == group || std::count(groups.begin(), groups.end(), group) > 0;
}

// What the system's user list says counts for sessions that begin later.
bool IsInGroupFromNextSession(const User& user, gid_t group) {
    std::vector<gid_t> groups(kMaxGroups);
    int count = kMaxGroups;
    if (user.name.empty() ||
        getgrouplist(user.name.c_str(), user.group, groups.data(), &count) < 0) {
        return false;
    }
    return std::count(groups.begin(), groups.begin() + count, group) > 0;
}

std::string Join(const std::string& node, const std::string& group, const User& user) {
    return "permission denied: " + node + " belongs to group '" + group +
           "'; run 'sudo usermod -aG " + group + " " +
           (user.name.empty() ? "USER" : Printable(user.name)) + "' and log in again";
}

} // namespace

std::string PermissionText(const std::string& node) {
    struct stat info {};
    if (stat(node.c_str(), &info) != 0) {
        return "permission denied: the folder of " + node + " cannot be looked into";
    }
    const std::string group = GroupName(info.st_gid);
    if (info.st_gid == 0 || (info.st_mode & kGroupAccess) != kGroupAccess) {
        return "permission denied: an access rule is missing that gives " + node +
               " to a group of yours; add one to /etc/udev/rules.d (GROUP=\"dialout\", "
               "MODE=\"0660\") and attach the device again";
    }
    if (IsInGroupNow(info.st_gid)) {
        return "permission denied, although group '" + group + "' may open " + node +
               "; look for a container, security module or access list that forbids it";
    }
    const User user = ThisUser();
    if (IsInGroupFromNextSession(user, info.st_gid)) {
        return "permission denied: this login began before '" + Printable(user.name) +
               "' joined group '" + group + "'; log in again";
    }
    return Join(node, group, user);
}

// SPDX-License-Identifier: MIT
#include "adapters/shared/private_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"

namespace {

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
    throw std::runtime_error("directory '" + Printable(path) + "' " + reason);
}

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

} // namespace

UniqueFd OpenPrivateDirectory(int parent, const std::string& path, bool* created) {
    const bool made = mkdirat(parent, path.c_str(), 0700) == 0;
    if (!made && errno != EEXIST) {
        Refuse(path, "cannot be made: " + ErrnoText(errno));
    }
    if (created != nullptr) {
        *created = made;
    }
    UniqueFd directory(
        openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!directory.IsOpen() || fstat(directory.Get(), &info) != 0) {
        Refuse(path, "cannot be used (it must be a directory, and no link): " + ErrnoText(errno));
    }
    if (info.st_uid != geteuid()) {
        Refuse(path, "belongs to another user");
    }
    if ((info.st_mode & 077) != 0) {
        Refuse(path, "is open to other users (chmod 700 makes it private)");
    }
    return directory;
}

std::vector<std::string> NamesIn(int directory) {
    std::vector<std::string> names;
    // A descriptor of its own, because reading moves a shared position.
    UniqueFd own(openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseDirectory> stream(own.IsOpen() ? fdopendir(own.Get())
                                                                   : nullptr);
    if (stream == nullptr) {
        return names;
    }
    own.Release(); // the stream's now
    while (const dirent* entry = readdir(stream.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

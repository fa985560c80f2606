// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_USER_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_USER_H

#include <sys/types.h>

#include <string>
#include <vector>

constexpr gid_t kDialout = 20;

/// While it lives, this process is that of an ordinary user who belongs to these groups as well.
class OrdinaryUser {
  public:
    explicit OrdinaryUser(const std::vector<gid_t>& groups);
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

/// A process called "holder" that has a terminal open for itself alone, until this object ends.
class Holder {
  public:
    explicit Holder(const std::string& node);
    ~Holder();
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    pid_t Process() const { return m_Process; }

  private:
    pid_t m_Process;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_MANAGER_CALLBACK_SCOPE_H
#define KOVASMGR_MANAGER_CALLBACK_SCOPE_H

/// Marks the calling thread as one that runs callbacks: the read thread, or a notification.
class CallbackScope {
  public:
    CallbackScope();
    ~CallbackScope();
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    static bool IsActive();
};

#endif

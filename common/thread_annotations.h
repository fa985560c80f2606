// SPDX-License-Identifier: MIT
//
// Clang's thread-safety annotations; nothing with other compilers.
#ifndef KOVASMGR_COMMON_THREAD_ANNOTATIONS_H
#define KOVASMGR_COMMON_THREAD_ANNOTATIONS_H

#if defined(__clang__)
#define KOVASMGR_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define KOVASMGR_THREAD_ANNOTATION(x)
#endif

#define KOVASMGR_CAPABILITY(x) KOVASMGR_THREAD_ANNOTATION(capability(x))
#define KOVASMGR_SCOPED_CAPABILITY KOVASMGR_THREAD_ANNOTATION(scoped_lockable)
#define KOVASMGR_GUARDED_BY(x) KOVASMGR_THREAD_ANNOTATION(guarded_by(x))
#define KOVASMGR_REQUIRES(...) KOVASMGR_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define KOVASMGR_ACQUIRE(...) KOVASMGR_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define KOVASMGR_RELEASE(...) KOVASMGR_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define KOVASMGR_NO_THREAD_SAFETY_ANALYSIS KOVASMGR_THREAD_ANNOTATION(no_thread_safety_analysis)

#endif

/* SPDX-License-Identifier: MIT */
#ifndef KOVASMGR_EXPORT_H
#define KOVASMGR_EXPORT_H

/* The library is compiled with hidden visibility; what carries this macro is its whole outside
 * face. */
#if defined(__GNUC__)
#define KOVASMGR_API __attribute__((visibility("default")))
#else
#define KOVASMGR_API
#endif

/* Lets the compiler check printf-like arguments; (index of the format, index of the first
 * argument). */
#if defined(__GNUC__)
#define KOVASMGR_PRINTF(formatIndex, firstArgument)                                                \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define KOVASMGR_PRINTF(formatIndex, firstArgument)
#endif

#ifdef __cplusplus
#define KOVASMGR_BEGIN_DECLS extern "C" {
#define KOVASMGR_END_DECLS }
/* Enumerations that cross the interface have 32 bits, and any 32-bit value may travel through them.
 */
#define KOVASMGR_ENUM32 : int32_t
#define KOVASMGR_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define KOVASMGR_BEGIN_DECLS
#define KOVASMGR_END_DECLS
#define KOVASMGR_ENUM32
#define KOVASMGR_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

#endif

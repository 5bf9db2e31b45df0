/* qxexport.h — linkage macros shared by every public header of libqxmath.
 *
 * The library is built with hidden visibility; QXMATH_API marks the names it
 * exports. QXMATH_HOST marks the names it imports from the host's
 * system-services library, which are bound by name when the library loads. */
#ifndef QXMATH_QXEXPORT_H
#define QXMATH_QXEXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define QXMATH_API                __attribute__((visibility("default")))
#define QXMATH_HOST               __attribute__((visibility("default")))
#define QXMATH_PRINTF(fmt, first) __attribute__((format(printf, fmt, first)))
#else
#define QXMATH_API
#define QXMATH_HOST
#define QXMATH_PRINTF(fmt, first)
#endif

#ifdef __cplusplus
#define QXMATH_BEGIN_DECLS extern "C" {
#define QXMATH_END_DECLS   }
#else
#define QXMATH_BEGIN_DECLS
#define QXMATH_END_DECLS
#endif

/* Major version of the binary interface; it is the SONAME's number. */
#define QXMATH_ABI_VERSION 1

#endif

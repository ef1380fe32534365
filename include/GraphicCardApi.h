#pragma once

// Also compiles as C.

#if !defined(_WIN64)
#error "orvel-graphic-cards-enumeration is a library for 64-bit Windows"
#endif

/// Version of the library that these headers belong to.
#define ORVEL_GRAPHIC_CARDS_VERSION "1.0.0"
#define ORVEL_GRAPHIC_CARDS_VERSION_MAJOR 1
#define ORVEL_GRAPHIC_CARDS_VERSION_MINOR 0
#define ORVEL_GRAPHIC_CARDS_VERSION_PATCH 0

/// Exports a declaration from `orvel-graphic-cards-enumeration.dll`, and imports it in a host.
#ifdef ORVEL_GRAPHIC_CARDS_BUILD
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllexport)
#else
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllimport)
#endif

/// Marks an assignment that shares pointers, so that the compiler warns about each use in a host.
#ifdef __cplusplus
#define ORVEL_GRAPHIC_CARDS_SHALLOW                                                                                         \
    [[deprecated("shares the source's memory: destroying both objects frees it twice; use GraphicCards or a pointer")]]
#endif

/// The headers' version as one number that increases with each release: 10203 for 1.2.3.
#define ORVEL_GRAPHIC_CARDS_VERSION_NUMBER                                                                                  \
    (ORVEL_GRAPHIC_CARDS_VERSION_MAJOR * 10000 + ORVEL_GRAPHIC_CARDS_VERSION_MINOR * 100 + ORVEL_GRAPHIC_CARDS_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/// Returns the version of the loaded library, in the format of ORVEL_GRAPHIC_CARDS_VERSION_NUMBER.
ORVEL_GRAPHIC_CARDS_API unsigned int GetGraphicCardsVersion(void);

#ifdef __cplusplus
}
#endif

/// Returns 1 if a library of this version (from GetGraphicCardsVersion) provides everything that these headers declare, else
/// 0. It does if it has the same major version and is not older.
static inline int AreGraphicCardsHeadersServedBy(unsigned int libraryVersion)
{
    return libraryVersion / 10000U == ORVEL_GRAPHIC_CARDS_VERSION_MAJOR &&
           libraryVersion >= ORVEL_GRAPHIC_CARDS_VERSION_NUMBER;
}

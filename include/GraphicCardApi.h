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

/// Marks what `orvel-graphic-cards-enumeration.dll` exports; a host sees it as imported.
#ifdef ORVEL_GRAPHIC_CARDS_BUILD
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllexport)
#else
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllimport)
#endif

/// Marks an assignment that shares pointers, so that a compiler warns where a host uses it.
#ifdef __cplusplus
#define ORVEL_GRAPHIC_CARDS_SHALLOW                                                                                         \
    [[deprecated("shares the source's memory: destroying both objects frees it twice; use GraphicCards or a pointer")]]
#endif

/// A version as one number that grows with it: 10203 for 1.2.3.
#define ORVEL_GRAPHIC_CARDS_VERSION_NUMBER                                                                                  \
    (ORVEL_GRAPHIC_CARDS_VERSION_MAJOR * 10000 + ORVEL_GRAPHIC_CARDS_VERSION_MINOR * 100 + ORVEL_GRAPHIC_CARDS_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/// Version of the loaded library, as ORVEL_GRAPHIC_CARDS_VERSION_NUMBER is that of the headers.
ORVEL_GRAPHIC_CARDS_API unsigned int GetGraphicCardsVersion(void);

#ifdef __cplusplus
}
#endif

/// Whether a library of this version, as GetGraphicCardsVersion returns it, has all that these headers declare: it is of the
/// same major version and not older. 1: yes; 0: no.
static inline int AreGraphicCardsHeadersServedBy(unsigned int libraryVersion)
{
    return libraryVersion / 10000U == ORVEL_GRAPHIC_CARDS_VERSION_MAJOR &&
           libraryVersion >= ORVEL_GRAPHIC_CARDS_VERSION_NUMBER;
}

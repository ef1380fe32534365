#pragma once

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

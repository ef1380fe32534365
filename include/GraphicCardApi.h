#pragma once

/// Marks what `orvel-graphic-cards-enumeration.dll` exports; a host sees it as imported.
#ifdef ORVEL_GRAPHIC_CARDS_BUILD
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllexport)
#else
#define ORVEL_GRAPHIC_CARDS_API __declspec(dllimport)
#endif

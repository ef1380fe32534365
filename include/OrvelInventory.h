#pragma once

/* The inventory: every graphics adapter of this computer, every value with its source.
 *
 * A snapshot is taken once and never changes: any number of threads may read it, and take others at the same time. The
 * calling thread needs no COM and is left as it was. Do not take a snapshot in DllMain. Compiles as C99 and C++.
 *
 * Structures begin with `size`, which the caller sets to sizeof: so a program that was compiled with an older header keeps
 * working. Texts are UTF-8, end in a NUL, and live as long as the snapshot, or, where they come from a table, as the DLL. */

#include <stddef.h>
#include <stdint.h>

#if !defined(_WIN64)
#error "orvel-graphic-cards-inventory is a library for 64-bit Windows"
#endif

#ifdef ORVEL_INVENTORY_BUILD
#define ORVEL_INVENTORY_API __declspec(dllexport)
#else
#define ORVEL_INVENTORY_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Version of this header: 10000 * major + 100 * minor + patch. A library of the same major version that is not older has all
 * that the header declares. */
#define ORVEL_INVENTORY_VERSION 10000U

/* Version of the loaded library. */
ORVEL_INVENTORY_API uint32_t OrvelInventoryVersion(void);

/* How a call ends. */
enum {
    ORVEL_INVENTORY_OK = 0,
    ORVEL_INVENTORY_INVALID_ARGUMENT = 1, /* a null pointer, an index out of range, a wrong `size` or number */
    ORVEL_INVENTORY_OUT_OF_MEMORY = 2,
    ORVEL_INVENTORY_ERROR = 3 /* anything else */
};

/* How much is asked. Each depth includes those before it. None wakes a sleeping card. */
enum {
    ORVEL_INVENTORY_DEPTH_SYSTEM = 1,   /* devices, driver keys, display configuration */
    ORVEL_INVENTORY_DEPTH_GRAPHICS = 2, /* also DXGI and DXCore */
    ORVEL_INVENTORY_DEPTH_DRIVERS = 3   /* also the vendors' libraries; the default */
};

/* Whether a value holds. */
enum {
    ORVEL_INVENTORY_KNOWN = 0,
    ORVEL_INVENTORY_UNSUPPORTED = 1, /* the card does not have it, or there is no source for this vendor */
    ORVEL_INVENTORY_UNAVAILABLE =
        2,                        /* no source has it, or what is there cannot be matched without guessing: see `reason` */
    ORVEL_INVENTORY_FAILED = 3,   /* a source refused, with `code`, or did not answer in time (1460) */
    ORVEL_INVENTORY_NOT_ASKED = 4 /* depth or sleep left out a source, and no other had the value */
};

/* Type of a value. */
enum { ORVEL_INVENTORY_TEXT = 0, ORVEL_INVENTORY_NUMBER = 1, ORVEL_INVENTORY_BOOL = 2, ORVEL_INVENTORY_DISPLAYS = 3 };

/* Forms of the JSON document. */
enum {
    ORVEL_INVENTORY_JSON_FULL = 0, /* each value as value, status, source, code and reason */
    ORVEL_INVENTORY_JSON_FLAT = 1  /* each value alone; null where it is not known */
};

/* A snapshot. */
typedef struct OrvelInventory OrvelInventory;

typedef struct OrvelInventoryOptions {
    uint32_t size;
    uint32_t depth;                /* ORVEL_INVENTORY_DEPTH_…; 0: the default */
    uint32_t timeout_milliseconds; /* a source that has not answered by then is abandoned; 0: the default, 5000 */
    uint32_t wake;                 /* not 0: ask the vendors' libraries although that wakes sleeping cards */
} OrvelInventoryOptions;

/* A row of the table of properties. */
typedef struct OrvelInventoryProperty {
    uint32_t size;
    uint32_t type;           /* ORVEL_INVENTORY_TEXT, … */
    const char* name;        /* as in JSON */
    const char* unit;        /* "" for none */
    const char* description; /* one line */
} OrvelInventoryProperty;

/* A value of a card. */
typedef struct OrvelInventoryValue {
    uint32_t size;
    uint32_t type;      /* the property's */
    uint32_t status;    /* ORVEL_INVENTORY_KNOWN, …; what follows up to `number` holds for KNOWN only */
    uint32_t displays;  /* how many there are; see OrvelInventoryGetDisplay */
    const char* text;   /* of a text; "" otherwise */
    uint64_t number;    /* of a number; 0 or 1 of a bool */
    int64_t code;       /* of FAILED: the source's own number; an HRESULT as unsigned 32 bits; 0 otherwise */
    const char* source; /* the source that decided; null where there is none for this card */
    const char* reason; /* why the value is not known; null for KNOWN */
} OrvelInventoryValue;

/* An active display of a card. */
typedef struct OrvelInventoryDisplay {
    uint32_t size;
    uint32_t width;              /* pixels; 0: not known */
    uint32_t height;             /* pixels; 0: not known */
    int32_t primary;             /* 1, 0; -1: not known */
    uint64_t refresh_millihertz; /* 0: not known */
    const char* gdi_name;        /* such as \\.\DISPLAY1; null: not known */
    const char* monitor_name;    /* null: not known */
    const char* connector;       /* such as HDMI; null: not known */
} OrvelInventoryDisplay;

/* How asking a source has ended. */
typedef struct OrvelInventorySource {
    uint32_t size;
    uint32_t status;    /* KNOWN: it has answered; UNAVAILABLE, FAILED, NOT_ASKED as for a value */
    const char* name;   /* as in `source` of a value */
    int64_t code;       /* of FAILED */
    const char* reason; /* null where it has answered, unless it lists a device that Windows does not */
} OrvelInventorySource;

/* Takes a snapshot. `options` may be null: the defaults. Free it with OrvelInventoryFree. A source that refuses or hangs
 * does not make it fail. Sets *inventory to null on failure. */
ORVEL_INVENTORY_API int32_t OrvelInventoryTake(const OrvelInventoryOptions* options, OrvelInventory** inventory);

/* Frees a snapshot and all its texts. Null is allowed. */
ORVEL_INVENTORY_API void OrvelInventoryFree(OrvelInventory* inventory);

/* Number of cards; 0 for null. Their order is the same on every run. */
ORVEL_INVENTORY_API uint32_t OrvelInventoryCardCount(const OrvelInventory* inventory);

/* Number of properties. Later releases append some. */
ORVEL_INVENTORY_API uint32_t OrvelInventoryPropertyCount(void);

/* The row of a property, counted from 0. */
ORVEL_INVENTORY_API int32_t OrvelInventoryGetProperty(uint32_t property, OrvelInventoryProperty* row);

/* The number of the property of a name; INVALID_ARGUMENT where there is none. */
ORVEL_INVENTORY_API int32_t OrvelInventoryFindProperty(const char* name, uint32_t* property);

/* A value of a card. */
ORVEL_INVENTORY_API int32_t OrvelInventoryGetValue(const OrvelInventory* inventory, uint32_t card, uint32_t property,
                                                   OrvelInventoryValue* value);

/* A display of a card. */
ORVEL_INVENTORY_API int32_t OrvelInventoryGetDisplay(const OrvelInventory* inventory, uint32_t card, uint32_t index,
                                                     OrvelInventoryDisplay* display);

/* Number of sources; 0 for null. */
ORVEL_INVENTORY_API uint32_t OrvelInventorySourceCount(const OrvelInventory* inventory);

/* How asking a source has ended. */
ORVEL_INVENTORY_API int32_t OrvelInventoryGetSource(const OrvelInventory* inventory, uint32_t index,
                                                    OrvelInventorySource* source);

/* The whole snapshot as JSON, in a form (ORVEL_INVENTORY_JSON_…). Free the text with OrvelInventoryFreeText. Sets *text to
 * null on failure. `length`, in bytes without the NUL, may be null. */
ORVEL_INVENTORY_API int32_t OrvelInventoryToJson(const OrvelInventory* inventory, uint32_t form, char** text,
                                                 size_t* length);

/* Frees a text of OrvelInventoryToJson. Null is allowed. */
ORVEL_INVENTORY_API void OrvelInventoryFreeText(char* text);

#ifdef __cplusplus
}
#endif

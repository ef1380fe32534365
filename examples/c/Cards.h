/* The properties of a graphics card that this program uses, for C. */
#ifndef CARDS_H
#define CARDS_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Card {
    const char* Manufacturer;
    const char* Name;
    const char* DriverVersion;
} Card;

/* Called for each card. The texts are valid during the call only. */
typedef void (*CardCallback)(const Card* card, void* context);

/* Calls `callback` for each card. The thread must have initialised COM. Returns 0 if the enumeration succeeds, otherwise a
 * failed HRESULT. */
long ForEachCard(CardCallback callback, void* context);

#ifdef __cplusplus
}
#endif

#endif

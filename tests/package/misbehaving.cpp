// misbehaving MACHINE SCENARIO: a host that does what a host should not do, or seldom does. The source is the same for every
// ABI.

#include <stdio.h>
#include <string.h>

#include <objbase.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "GraphicCardLog.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

// Placement new without <new>, which is not available here for MSVC's ABI.
struct Place {
    void* At;
};

inline void* operator new(size_t, Place place)
{
    return place.At;
}

namespace {

int lines = 0;
int otherLines = 0;

void Count(int, const char*, const char*, void* context)
{
    ++*static_cast<int*>(context);
}

void Throw(int, const char*, const char*, void* context)
{
    ++*static_cast<int*>(context);
    throw 5;
}

void ReplaceItself(int, const char* function, const char* message, void* context)
{
    SetGraphicCardLog(Count, 6, &otherLines);
    if (*function != '\0' && *message != '\0') { // both are still valid
        ++*static_cast<int*>(context);
    }
}

void TakeItselfAway(int, const char*, const char* message, void* context)
{
    SetGraphicCardLog(nullptr, 0, nullptr);
    if (*message != '\0') {
        ++*static_cast<int*>(context);
    }
}

struct FloatingPoint {
    unsigned int Sse;
    unsigned short X87;
};

FloatingPoint Now()
{
    FloatingPoint now;
    __asm__ volatile("stmxcsr %0" : "=m"(now.Sse));
    __asm__ volatile("fnstcw %0" : "=m"(now.X87));
    return now;
}

// Every floating-point trap except that for inexact results, which hosts leave masked.
constexpr FloatingPoint trapping = {0x1000, 0x0360};

void Unmask()
{
    __asm__ volatile("fnclex");
    __asm__ volatile("ldmxcsr %0" : : "m"(trapping.Sse));
    __asm__ volatile("fldcw %0" : : "m"(trapping.X87));
}

void UnmaskInCallback(int, const char*, const char*, void* context)
{
    ++*static_cast<int*>(context);
    Unmask();
}

void PrintTraps()
{
    const FloatingPoint now = Now();
    const FloatingPoint masked = {0x1F80, 0x037F};
    __asm__ volatile("ldmxcsr %0" : : "m"(masked.Sse)); // printf may fail with traps
    __asm__ volatile("fldcw %0" : : "m"(masked.X87));
    printf("traps kept: %d\n", (now.Sse & 0xFFC0U) == trapping.Sse && now.X87 == trapping.X87);
}

void Enumerate(bool isTrapping)
{
    GraphicCardEnumeration* cards = new GraphicCardEnumeration;
    int thrown = 0;
    if (isTrapping) {
        Unmask();
    }
    try {
        cards->QueryGraphicCards();
    } catch (long) {
        thrown = 1;
    }
    if (isTrapping) {
        PrintTraps();
    }
    printf("cards: %d, thrown: %d, lines: %d, other lines: %d\n", static_cast<int>(cards->size()), thrown, lines,
           otherLines);
    delete cards;
}

/// Destroys an enumeration twice. The second destructor may only read what the first has left.
void DestroyTwice()
{
    alignas(GraphicCardEnumeration) unsigned char storage[sizeof(GraphicCardEnumeration)];
    GraphicCardEnumeration* cards = new (Place{storage}) GraphicCardEnumeration;
    cards->QueryGraphicCards();
    cards->~GraphicCardEnumeration();
    unsigned char all = 0;
    for (const unsigned char byte : storage) {
        all = static_cast<unsigned char>(all | byte);
    }
    printf("left: %d\n", all);
    cards->~GraphicCardEnumeration();
    printf("destroyed twice\n");
}

} // namespace

int main(int argc, char** argv)
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const char* problem = "";
    if (argc < 3 || OrvelSimulateMachine(argv[1], &problem) != 0) {
        printf("%s\n", problem);
        return 2;
    }
    const char* scenario = argv[2];
    struct {
        const char* Name;
        GraphicCardLogCallback Callback;
        int MaxSeverity;
    } const callbacks[] = {
        {"counts", Count, 6},
        {"throws", Throw, 6},
        {"replaces itself", ReplaceItself, 6},
        {"ends itself", TakeItselfAway, 6},
        {"unmasks", UnmaskInCallback, 6},
        {"all severities", Count, 2000000000},
        {"no severity", Count, -2000000000},
    };
    for (const auto& callback : callbacks) {
        if (strcmp(scenario, callback.Name) == 0) {
            SetGraphicCardLog(callback.Callback, callback.MaxSeverity, &lines);
            Enumerate(false);
        }
    }
    if (strcmp(scenario, "traps") == 0) {
        Enumerate(true);
    } else if (strcmp(scenario, "destroys twice") == 0) {
        DestroyTwice();
    }
    printf("report: %s\n", OrvelSimulationReport());
    return 0;
}

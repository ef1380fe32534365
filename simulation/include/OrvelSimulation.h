/*
 * Simulated machines behind the platform's real interfaces.
 *
 * A host loads orvel-simulation.dll, puts a machine in place and only then loads the product (or calls it, when the product
 * is in the process already). The machine's JSON text then defines every answer of WMI, the registry, SetupAPI, the display
 * configuration, DXGI, DXCore, the desktop window manager, OpenCL, NVAPI, NVML, ADL and ADLX.
 *
 * The simulated DLLs must be beside orvel-simulation.dll. All functions may be called many times, from one thread at a time,
 * but not during an enumeration. COM must be initialised on the thread that puts a machine in place,
 * in either kind of apartment, and must stay so until the simulation ends. Every thread then sees the machine, whatever its
 * apartment.
 */
#ifndef ORVEL_SIMULATION_H
#define ORVEL_SIMULATION_H

#ifdef ORVEL_SIMULATION_BUILD
#define ORVEL_SIMULATION_API __declspec(dllexport)
#else
#define ORVEL_SIMULATION_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What OrvelSimulateMachine and OrvelSimulateMachineText return. */
#define ORVEL_SIMULATION_IN_PLACE 0      /* the process is on that machine */
#define ORVEL_SIMULATION_WRONG_MACHINE 1 /* the file or text cannot be read or is wrong; nothing was changed */
#define ORVEL_SIMULATION_NOT_IN_PLACE 2  /* the machine is valid, but could not be put in place; none is in place now */

/*
 * Puts the machine of a JSON file in place of the previous one, and clears the trace and the live counters.
 * path: UTF-8. problem (may be null): receives one line "FILE: JSON PATH: REASON", or "FILE: line L, column C: REASON" for
 * broken JSON, or an empty text on success. A null path is a wrong machine. The library owns the text, which is valid until
 * the next call.
 */
ORVEL_SIMULATION_API int OrvelSimulateMachine(const char* path, const char** problem);

/* The same for a machine given as JSON text; sourceName replaces the file in the problem. If either is null, the machine is
 * wrong. */
ORVEL_SIMULATION_API int OrvelSimulateMachineText(const char* json, const char* sourceName, const char** problem);

/*
 * What happened since the last machine was put in place, as JSON: {"machine": its name or null, "touched": whether
 * anything was queried from the machine, "trace": [every platform call, in order], "live": {interface: objects and sessions
 * that are still alive}, "violations": {"count": how often the caller broke a rule of an interface, "texts": ["CALL: WHAT",
 * one for each]}}. The report remains available after OrvelEndSimulation. The library owns the text, which is valid until
 * the next call.
 */
ORVEL_SIMULATION_API const char* OrvelSimulationReport(void);

/*
 * How many platform calls since the last machine was put in place begin with `start`, written as in the report's trace:
 * "nvml nvmlInit_v2" counts the calls of one function, "nvml " those of an interface, "" all. -1 when `start` is null.
 */
ORVEL_SIMULATION_API int OrvelSimulationCalls(const char* start);

/*
 * Records the platform calls from now on in more detail than the trace, for a program that repeats them. Besides the trace's
 * calls a recording has those of the loader and the registry that Windows answers, and NVAPI's look-ups of functions.
 */
ORVEL_SIMULATION_API void OrvelStartRecording(void);

/*
 * Ends the recording and returns it as JSON: [{"call": TEXT, …}, …], in order. A TEXT is that of the trace or, for the other
 * calls, "loader FUNCTION …", "registry FUNCTION …" or "nvapi nvapi_QueryInterface NAME". What else a call has:
 *   "returns": [N, …]  the handles and objects that it returns, numbered in the order in which they first appear
 *   "on": N            the handle or object that it is on; missing where the recording does not have it
 *   "number": N        a number that the text lacks: the caller's buffer in bytes or elements, flags, a version, an id
 *   "input": [N, …]    the bytes of a structure that the caller has filled
 * WMI's rows and enumerators, OpenCL's, NVAPI's, NVML's and ADL's handles, and registry keys have numbers. Without a
 * recording the list is empty. The library owns the text, which is valid until the next call.
 */
ORVEL_SIMULATION_API const char* OrvelEndRecording(void);

/* Ends the simulation: the process sees the computer's own WMI, registry and DLLs again, except simulated DLLs that other
 * code still holds. Does nothing without a machine in place. */
ORVEL_SIMULATION_API void OrvelEndSimulation(void);

#ifdef __cplusplus
}
#endif

#endif

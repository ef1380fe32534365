#pragma once

/// A function that a forwarder of a simulated interface DLL leads to; it is named Sim_ plus the published name.
#define SIMULATED extern "C" __declspec(dllexport)

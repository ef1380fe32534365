#pragma once

/// The target of a forwarder in a simulated interface DLL; its name is Sim_ plus the published name.
#define SIMULATED extern "C" __declspec(dllexport)

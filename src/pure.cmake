# The units that know no Windows header. The tests build them natively too.
set(pure_sources
    formulas/LocationText.cpp
    formulas/MemoryBandwidth.cpp
    formulas/NumberText.cpp
    formulas/PnpDeviceId.cpp
    formulas/RegistryText.cpp
    formulas/RunFailure.cpp
    formulas/StatusNames.cpp
    formulas/VideoControllerQuery.cpp
    vendors/intel/IntelFillRate.cpp
    vendors/intel/IntelTexts.cpp
    vendors/nvidia/NvidiaFormulas.cpp)
list(TRANSFORM pure_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

# The units that know no Windows header, and their tests: built for Windows, and natively with the sanitizers.
set(pure_sources
    formulas/LocationText.cpp
    formulas/MemoryBandwidth.cpp
    formulas/NumberText.cpp
    formulas/PnpDeviceId.cpp
    formulas/RegistryText.cpp
    formulas/StatusNames.cpp
    formulas/VideoControllerQuery.cpp
    vendors/intel/IntelFillRate.cpp
    vendors/intel/IntelTexts.cpp
    vendors/nvidia/NvidiaFormulas.cpp)
list(TRANSFORM pure_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/../src/)

set(pure_tests
    formulas/LocationTextTest.cpp
    formulas/MemoryBandwidthTest.cpp
    formulas/NumberTextTest.cpp
    formulas/PnpDeviceIdTest.cpp
    formulas/RegistryTextTest.cpp
    formulas/StatusNamesTest.cpp
    formulas/VideoControllerQueryTest.cpp
    support/Main.cpp
    vendors/intel/IntelFillRateTest.cpp
    vendors/intel/IntelTextsTest.cpp
    vendors/nvidia/NvidiaFormulasTest.cpp)
list(TRANSFORM pure_tests PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

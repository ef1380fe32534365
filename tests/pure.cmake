# The units that know no Windows header, and their tests: built for Windows, and natively with the sanitizers.
set(pure_sources
    enumeration/StatusNames.cpp
    enumeration/VideoControllerQuery.cpp
    system/LocationText.cpp
    system/MemoryBandwidth.cpp
    system/NumberText.cpp
    system/PnpDeviceId.cpp
    system/RegistryText.cpp
    vendors/intel/IntelFillRate.cpp
    vendors/intel/IntelTexts.cpp
    vendors/nvidia/NvidiaFormulas.cpp)
list(TRANSFORM pure_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/../src/)

set(pure_tests
    support/Main.cpp
    enumeration/StatusNamesTest.cpp
    enumeration/VideoControllerQueryTest.cpp
    system/LocationTextTest.cpp
    system/MemoryBandwidthTest.cpp
    system/NumberTextTest.cpp
    system/PnpDeviceIdTest.cpp
    system/RegistryTextTest.cpp
    vendors/intel/IntelFillRateTest.cpp
    vendors/intel/IntelTextsTest.cpp
    vendors/nvidia/NvidiaFormulasTest.cpp)
list(TRANSFORM pure_tests PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

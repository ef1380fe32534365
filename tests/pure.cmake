# The tests of the units that include no Windows header. They are built for Windows, and natively with the sanitizers.
set(pure_tests
    formulas/LocationTextTest.cpp
    formulas/MemoryBandwidthTest.cpp
    formulas/NumberTextTest.cpp
    formulas/PnpDeviceIdTest.cpp
    formulas/RegistryTextTest.cpp
    formulas/RunFailureTest.cpp
    formulas/StatusNamesTest.cpp
    formulas/VideoControllerQueryTest.cpp
    vendors/intel/IntelFillRateTest.cpp
    vendors/intel/IntelTextsTest.cpp
    vendors/nvidia/NvidiaFormulasTest.cpp)
list(TRANSFORM pure_tests PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

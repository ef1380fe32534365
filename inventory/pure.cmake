# The units of the inventory that know no Windows header: for the DLL, and for their tests.
set(inventory_pure_sources
    json/Json.cpp
    matching/AdapterAnswers.cpp
    matching/AdapterMatching.cpp
    matching/Cards.cpp
    matching/DeviceFacts.cpp
    matching/DriverFacts.cpp
    matching/DriverMatching.cpp
    matching/EqualGroups.cpp
    matching/Identifiers.cpp
    matching/Ranges.cpp
    matching/RawValues.cpp
    model/Names.cpp
    model/Properties.cpp
    model/Text.cpp
    sources/DriverReading.cpp
    sources/Nvapi.cpp
    sources/Nvml.cpp)
list(TRANSFORM inventory_pure_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

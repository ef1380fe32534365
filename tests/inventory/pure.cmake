# The tests of the inventory's units that include no Windows header.
set(inventory_pure_tests
    Readings.cpp
    json/JsonTest.cpp
    matching/AdapterMatchingTest.cpp
    matching/CardsTest.cpp
    matching/DeviceFactsTest.cpp
    matching/DriverFactsTest.cpp
    matching/DriverMatchingTest.cpp
    matching/IdentifiersTest.cpp
    matching/RawValuesTest.cpp
    model/NamesTest.cpp
    model/PropertiesDocumentTest.cpp
    model/PropertiesTest.cpp
    model/TextTest.cpp
    sources/NvapiTest.cpp
    sources/NvmlTest.cpp)
list(TRANSFORM inventory_pure_tests PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
get_filename_component(inventory_documents ${CMAKE_CURRENT_LIST_DIR}/../../docs ABSOLUTE)
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/model/PropertiesDocumentTest.cpp PROPERTIES
    SKIP_PRECOMPILE_HEADERS ON # they are compiled without the definition
    COMPILE_DEFINITIONS ORVEL_DOCUMENTS="${inventory_documents}")

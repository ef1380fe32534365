# The tests of the tools' units that know no Windows header: built for Windows, and natively with the sanitizers.
set(tools_pure_tests
    TextLayoutTest.cpp
    inventory/ComparisonTest.cpp
    inventory/CsvTest.cpp
    inventory/Documents.cpp
    inventory/FactsTest.cpp
    inventory/InventoryTest.cpp
    inventory/InventoryTextTest.cpp
    inventory/NdjsonTest.cpp
    inventory/OpenMetricsTest.cpp
    inventory/PageTest.cpp
    inventory/UnitsTest.cpp)
list(TRANSFORM tools_pure_tests PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

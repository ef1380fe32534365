# The units of the tools that know no Windows header. The tests build them natively too.
set(tools_pure_sources
    TextLayout.cpp
    inventory/Comparison.cpp
    inventory/ComparisonReport.cpp
    inventory/Csv.cpp
    inventory/Facts.cpp
    inventory/Inventory.cpp
    inventory/InventoryText.cpp
    inventory/Ndjson.cpp
    inventory/OpenMetrics.cpp
    inventory/Page.cpp
    inventory/PageStyle.cpp
    inventory/Units.cpp)
list(TRANSFORM tools_pure_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

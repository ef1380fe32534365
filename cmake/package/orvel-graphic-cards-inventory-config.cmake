# find_package(orvel-graphic-cards-inventory): the inventory of graphics adapters for MSVC and MinGW programs in C or C++.
#
#   orvel::graphic-cards-inventory   the library; $<TARGET_RUNTIME_DLLS:program> lists its DLL
#
# ORVEL_INVENTORY_SCHEMA is the path of the JSON schema for inventory documents.

set(_orvel orvel-graphic-cards-inventory)
include("${CMAKE_CURRENT_LIST_DIR}/../orvel-package.cmake")
_orvel_import_library(_orvel_implib lib orvel-graphic-cards-inventory)
_orvel_check(_orvel_problem orvel::graphic-cards-inventory bin/orvel-graphic-cards-inventory.dll include/OrvelInventory.h
    schema/inventory.schema.json ${_orvel_implib})
if(${_orvel}_FOUND AND _orvel_problem)
    _orvel_refuse("${_orvel_problem}")
endif()

if(${_orvel}_FOUND)
    set(ORVEL_INVENTORY_SCHEMA "${_orvel_root}/schema/inventory.schema.json")
    _orvel_add_library(orvel::graphic-cards-inventory bin/orvel-graphic-cards-inventory.dll
        IMPORTED_IMPLIB "${_orvel_root}/${_orvel_implib}"
        INTERFACE_INCLUDE_DIRECTORIES "${_orvel_root}/include")
endif()

# find_package(orvel-graphic-cards-enumeration [COMPONENTS simulation]): the library for MSVC and MinGW hosts.
#
#   orvel::graphic-cards-enumeration   the library, with the DLLs that it needs at run time
#   orvel::nvml                        the substitute nvml.dll, for computers without an NVIDIA driver
#   orvel::simulation                  only with the component: simulated machines for a host's own tests; the property
#                                      ORVEL_MACHINES of the target is the folder of the machine files
#
# $<TARGET_RUNTIME_DLLS:program> lists all DLLs that must be in the program's folder. If the program links the simulation
# directly, the list contains the simulation's nvml.dll instead of the substitute.

set(_orvel orvel-graphic-cards-enumeration)
include("${CMAKE_CURRENT_LIST_DIR}/../orvel-package.cmake")
_orvel_import_library(_orvel_implib lib orvel-graphic-cards-enumeration)
_orvel_import_library(_orvel_simulation_implib simulation/lib orvel-simulation)
set(_orvel_stand_ins opencl dxgi dwmapi nvapi64 nvml atiadlxx amdadlx64)
list(TRANSFORM _orvel_stand_ins REPLACE "(.+)" "simulation/\\1.dll" OUTPUT_VARIABLE _orvel_stand_in_files)

_orvel_check(_orvel_problem orvel::graphic-cards-enumeration bin/orvel-graphic-cards-enumeration.dll
    bin/orvel-shared-wmi-client.dll bin/fallback/nvml.dll include/GraphicCardEnumeration.h ${_orvel_implib})
_orvel_check(_orvel_simulation_problem orvel::simulation simulation/orvel-simulation.dll ${_orvel_stand_in_files}
    simulation/include/OrvelSimulation.h ${_orvel_simulation_implib})

if(${_orvel}_FOUND AND _orvel_problem)
    _orvel_refuse("${_orvel_problem}")
endif()
unset(${_orvel}_simulation_FOUND)
foreach(_orvel_component IN LISTS ${_orvel}_FIND_COMPONENTS)
    set(_orvel_component_problem "")
    if(NOT _orvel_component STREQUAL "simulation")
        set(_orvel_component_problem "There is no component \"${_orvel_component}\"; the only one is \"simulation\"")
    elseif(_orvel_simulation_problem)
        set(_orvel_component_problem "${_orvel_simulation_problem}")
    endif()
    if(NOT _orvel_component_problem)
        set(${_orvel}_${_orvel_component}_FOUND TRUE)
    else()
        set(${_orvel}_${_orvel_component}_FOUND FALSE)
        if(${_orvel}_FIND_REQUIRED_${_orvel_component} AND ${_orvel}_FOUND)
            _orvel_refuse("${_orvel_component_problem}")
        endif()
    endif()
endforeach()

if(${_orvel}_FOUND)
    # No program links to these DLLs, but CMake requires an import library for each, so they get the library's.
    _orvel_add_library(orvel::wmi-client bin/orvel-shared-wmi-client.dll)
    _orvel_add_library(orvel::nvml bin/fallback/nvml.dll IMPORTED_IMPLIB "${_orvel_root}/${_orvel_implib}")
    _orvel_add_library(orvel::graphic-cards-enumeration bin/orvel-graphic-cards-enumeration.dll
        IMPORTED_IMPLIB "${_orvel_root}/${_orvel_implib}"
        IMPORTED_LINK_DEPENDENT_LIBRARIES orvel::wmi-client
        INTERFACE_COMPILE_FEATURES cxx_std_17
        INTERFACE_INCLUDE_DIRECTORIES "${_orvel_root}/include"
        INTERFACE_LINK_LIBRARIES
            "$<$<NOT:$<IN_LIST:orvel::simulation,$<TARGET_PROPERTY:LINK_LIBRARIES>>>:orvel::nvml>")
endif()
if(${_orvel}_FOUND AND ${_orvel}_simulation_FOUND)
    foreach(_orvel_name IN LISTS _orvel_stand_ins)
        _orvel_add_library(orvel::simulated-${_orvel_name} simulation/${_orvel_name}.dll)
    endforeach()
    list(TRANSFORM _orvel_stand_ins PREPEND orvel::simulated-)
    _orvel_add_library(orvel::simulation simulation/orvel-simulation.dll
        IMPORTED_IMPLIB "${_orvel_root}/${_orvel_simulation_implib}"
        INTERFACE_INCLUDE_DIRECTORIES "${_orvel_root}/simulation/include"
        ORVEL_MACHINES "${_orvel_root}/simulation/machines")
    set_property(TARGET orvel::simulation PROPERTY IMPORTED_LINK_DEPENDENT_LIBRARIES ${_orvel_stand_ins})
endif()

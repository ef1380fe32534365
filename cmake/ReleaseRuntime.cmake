# orvel_release_runtime(DLL): makes a DLL release the resources of its GCC runtime when it is unloaded.
function(orvel_release_runtime dll)
    if(MINGW)
        target_sources(${dll} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/ReleaseRuntime.cpp)
        target_link_options(${dll} PRIVATE LINKER:--wrap=__imp_TlsAlloc)
    endif()
endfunction()

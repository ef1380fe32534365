# orvel_release_runtime(DLL): lets a DLL, when it is unloaded, give back what its copy of GCC's runtime has taken.
function(orvel_release_runtime dll)
    if(MINGW)
        target_sources(${dll} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/ReleaseRuntime.cpp)
        target_link_options(${dll} PRIVATE LINKER:--wrap=__imp_TlsAlloc)
    endif()
endfunction()

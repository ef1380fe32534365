# cmake -DVERSION=… -DFILE=… -P version-file.cmake: what find_package asks for the package's version, ranges included.
include(CMakePackageConfigHelpers)
write_basic_package_version_file("${FILE}" VERSION "${VERSION}" COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)

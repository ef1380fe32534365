# cmake -DVERSION=… -DFILE=… -P version-file.cmake: writes the file that find_package reads to check the package's version, including ranges.
include(CMakePackageConfigHelpers)
write_basic_package_version_file("${FILE}" VERSION "${VERSION}" COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)

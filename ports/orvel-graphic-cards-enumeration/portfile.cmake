# An overlay port: vcpkg install orvel-graphic-cards-enumeration --overlay-ports=ports
#
# The DLL serves MSVC and MinGW alike, so the port takes the finished package. Set ORVEL_GRAPHIC_CARDS_PACKAGE in the environment
# to the unpacked folder (and list the variable in VCPKG_KEEP_ENV_VARS).
set(package "$ENV{ORVEL_GRAPHIC_CARDS_PACKAGE}")
if(NOT EXISTS "${package}/include/GraphicCardEnumeration.h")
    message(FATAL_ERROR "ORVEL_GRAPHIC_CARDS_PACKAGE does not name the unpacked package")
endif()

file(INSTALL "${package}/include/" DESTINATION "${CURRENT_PACKAGES_DIR}/include")
file(INSTALL "${package}/bin/orvel-graphic-cards-enumeration.dll" "${package}/bin/orvel-shared-wmi-client.dll"
    "${package}/bin/orvel-graphic-cards-inventory.dll" DESTINATION "${CURRENT_PACKAGES_DIR}/bin")
file(INSTALL "${package}/bin/fallback" DESTINATION "${CURRENT_PACKAGES_DIR}/bin")
file(INSTALL "${package}/bin/orvel-graphic-cards.exe" DESTINATION "${CURRENT_PACKAGES_DIR}/tools/${PORT}")
file(INSTALL "${package}/lib/" DESTINATION "${CURRENT_PACKAGES_DIR}/lib" PATTERN "cmake" EXCLUDE)
file(INSTALL "${package}/simulation/" DESTINATION "${CURRENT_PACKAGES_DIR}/simulation")
file(INSTALL "${package}/schema/" DESTINATION "${CURRENT_PACKAGES_DIR}/schema")
# The package's configs find its files two folders up, as in the package itself.
file(INSTALL "${package}/lib/cmake/" DESTINATION "${CURRENT_PACKAGES_DIR}/lib/cmake")
set(VCPKG_POLICY_SKIP_MISPLACED_CMAKE_FILES_CHECK enabled)
set(VCPKG_POLICY_ALLOW_RESTRICTED_HEADERS enabled)
set(VCPKG_POLICY_MISMATCHED_NUMBER_OF_BINARIES enabled)
file(GLOB licences "${package}/licenses/*.txt")
vcpkg_install_copyright(FILE_LIST ${licences})

# What an installation holds: the libraries, their headers, the program, and the files by which
# CMake and pkg-config find them.

include(CMakePackageConfigHelpers)

install(TARGETS OrvaneCore OrvaneHeadless
  EXPORT OrvaneTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

# The decoder modules lie where OrvaneHeadless looks for it.
install(TARGETS orvane_ffmpeg orvane_flac orvane_mp3
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/orvane")

# The speech model, where set-up has fetched it.
install(FILES "${PROJECT_BINARY_DIR}/lib/OrvaneHeadless_OrvaneHeadless.bundle/silero_vad_v6.onnx"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/orvane" OPTIONAL)

# The installed program finds its libraries wherever the prefix is moved to. Their folder may be
# another one than in the build tree, as in lib/x86_64-linux-gnu.
file(RELATIVE_PATH ORVANE_BIN_TO_LIB
  "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(ORVANE_RUN_PATH "${CMAKE_INSTALL_RPATH}" "$ORIGIN/${ORVANE_BIN_TO_LIB}")
list(REMOVE_DUPLICATES ORVANE_RUN_PATH)
set_target_properties(orvane PROPERTIES INSTALL_RPATH "${ORVANE_RUN_PATH}")
install(TARGETS orvane RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")

# Licences of what others have written and the product uses.
foreach(package IN ITEMS
    libavformat-dev libcli11-dev libflac-dev libhwy-dev libicu-dev libkissfft-dev
    libmpg123-dev libsoxr-dev)
  install(FILES "/usr/share/doc/${package}/copyright" RENAME "${package}.txt"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}/third-party" OPTIONAL)
endforeach()
install(FILES "${PROJECT_SOURCE_DIR}/resources/licences/silero_vad.txt"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}/third-party")

set(ORVANE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Orvane")
install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION "${ORVANE_CMAKE_DIR}")
configure_package_config_file(cmake/OrvaneConfig.cmake.in
  "${PROJECT_BINARY_DIR}/OrvaneConfig.cmake" INSTALL_DESTINATION "${ORVANE_CMAKE_DIR}")
# Before 1.0 every minor version may break what was built against the one before.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/OrvaneConfig.cmake" "${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake"
  DESTINATION "${ORVANE_CMAKE_DIR}")

# pkg-config: the prefix is told from where the file lies, so that a moved installation still works.
file(RELATIVE_PATH ORVANE_PKGCONFIG_TO_PREFIX
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" ORVANE_PKGCONFIG_TO_PREFIX "${ORVANE_PKGCONFIG_TO_PREFIX}")
foreach(library IN ITEMS core headless)
  configure_file("cmake/orvane-${library}.pc.in" "${PROJECT_BINARY_DIR}/orvane-${library}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/orvane-${library}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

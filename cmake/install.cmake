# What "cmake --install" puts where. The result can be moved as a whole: programs and libraries find each
# other by their own place, and so do the files for find_package and pkg-config.

include(CMakePackageConfigHelpers)

set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/tvxconv")
set(pkgConfigFolder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# The design reader is looked for beside the library or program that loads it. Windows has DLLs and
# programs in one folder; elsewhere the program finds it by way of its search path, like the libraries.
if(WIN32)
  set(moduleFolder "${CMAKE_INSTALL_BINDIR}")
else()
  set(moduleFolder "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH libFromBin "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(tvxconv_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${libFromBin}")
  set_target_properties(tvxconv DraDsnReader PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()

install(TARGETS tvxconv_cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS DraDsnReader LIBRARY DESTINATION "${moduleFolder}")
install(TARGETS tvxconv EXPORT tvxconvTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TVX_WOBJ_LIBRARY)
  # A library that was built elsewhere comes along as the file it is, with the links that lead to it: one of
  # these is the name that the loader will ask for.
  set(projectLibraryFolder "${CMAKE_INSTALL_LIBDIR}")
  if(TVX_WOBJ_LIBRARY MATCHES "\\.[dD][lL][lL]$")
    set(projectLibraryFolder "${CMAKE_INSTALL_BINDIR}")
  endif()
  install(CODE "file(INSTALL \"${TVX_WOBJ_LIBRARY}\" TYPE SHARED_LIBRARY FOLLOW_SYMLINK_CHAIN
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${projectLibraryFolder}\")")
else()
  if(NOT WIN32)
    set_target_properties(tvx_wobj PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  install(TARGETS tvx_wobj EXPORT tvxconvTargets
      RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
      LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
      ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
      INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv")
endif()

# The public headers, and those they include.
install(FILES
    src/interface/hostStrings.h
    src/interface/IDraftelProjectConverter.h
    src/interface/ITarnetProjectConverter.h
    src/interface/libraryApi.h
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/interface")
install(FILES src/platform/export.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/platform")
install(FILES dsnreader/dsnreader.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/dsnreader")
install(FILES tvx_wobj/tvx_wobj.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvx_wobj")

install(FILES LICENSE README.md DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/tvxconv")

# For find_package(tvxconv): the targets tvxconv::tvxconv and tvxconv::tvx_wobj.
install(EXPORT tvxconvTargets NAMESPACE tvxconv:: DESTINATION "${packageFolder}")
configure_package_config_file(cmake/tvxconvConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/tvxconvConfig.cmake"
    INSTALL_DESTINATION "${packageFolder}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/tvxconvConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/tvxconvConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/tvxconvConfigVersion.cmake"
    DESTINATION "${packageFolder}")

# For pkg-config, which knows the folder of the file and nothing else.
set(pkgConfigFullFolder "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH prefixFromPkgConfig "${pkgConfigFullFolder}" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" prefixFromPkgConfig "${prefixFromPkgConfig}")
file(RELATIVE_PATH includesFromPkgConfig "${pkgConfigFullFolder}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
configure_file(cmake/tvxconv.pc.in "${CMAKE_CURRENT_BINARY_DIR}/tvxconv.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/tvxconv.pc" DESTINATION "${pkgConfigFolder}")

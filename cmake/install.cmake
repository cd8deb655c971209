# What "cmake --install" puts where. The result can be moved as a whole: programs and libraries find each
# other by their own place, and so do the files for find_package and pkg-config.
#
# The same files go into the Debian packages, whose libraries lie in another folder. So there are two layouts,
# and what they share is said once, in installLayout.

include(CMakePackageConfigHelpers)

# Where the libraries of a Debian package lie; empty where that is not known.
set(debianLibFolder "")
if(NOT WIN32 AND CMAKE_LIBRARY_ARCHITECTURE)
  set(debianLibFolder "lib/${CMAKE_LIBRARY_ARCHITECTURE}")
endif()

# Windows has DLLs and programs in one folder; elsewhere programs find the libraries by way of their search path.
# The design reader is found like the libraries: it lies beside them.
if(NOT WIN32)
  set(libFolders "${CMAKE_INSTALL_FULL_LIBDIR}")
  if(debianLibFolder)
    list(APPEND libFolders "${CMAKE_INSTALL_PREFIX}/${debianLibFolder}")
  endif()
  set(programSearchPath "$ORIGIN")
  foreach(folder ${libFolders})
    file(RELATIVE_PATH libFromBin "${CMAKE_INSTALL_FULL_BINDIR}" "${folder}")
    list(APPEND programSearchPath "$ORIGIN/${libFromBin}")
  endforeach()
  list(REMOVE_DUPLICATES programSearchPath)
  set_target_properties(tvxconv_cli PROPERTIES INSTALL_RPATH "${programSearchPath}")
  set(installedTargets tvxconv_cli tvxconv DraDsnReader)
  if(NOT TVX_WOBJ_LIBRARY)
    list(APPEND installedTargets tvx_wobj)
  endif()
  list(SUBLIST installedTargets 1 -1 installedLibraries)
  set_target_properties(${installedLibraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
  # Otherwise cmake pads the search path of a build with empty entries, and the loader takes an empty entry for
  # the current folder.
  set_target_properties(${installedTargets} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  if(TVX_WOBJ_LIBRARY) # in a folder of its own
    set_target_properties(${installedTargets} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  endif()
endif()

# installLayout(NAME LIB_FOLDER RUNTIME DEVELOPMENT PROGRAM [EXCLUDE_FROM_ALL]): programs, libraries and what other
# projects need to use them. The libraries go into LIB_FOLDER. RUNTIME, DEVELOPMENT and PROGRAM are the names of
# the layout's components. With EXCLUDE_FROM_ALL only those who ask for a component get it. NAME sets the
# generated files of one layout apart from those of the other.
function(installLayout name libFolder runtime development program)
  set(packageFolder "${libFolder}/cmake/tvxconv")
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  set(moduleFolder "${libFolder}")
  if(WIN32)
    set(moduleFolder "${CMAKE_INSTALL_BINDIR}")
  endif()

  install(TARGETS tvxconv_cli
      RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT "${program}" ${ARGN})
  install(TARGETS DraDsnReader
      LIBRARY DESTINATION "${moduleFolder}" COMPONENT "${runtime}" ${ARGN})
  set(libraries tvxconv)
  if(TVX_WOBJ_LIBRARY)
    # A library that was built elsewhere comes along as the file it is, with the links that lead to it: one of
    # these is the name that the loader will ask for.
    set(projectLibraryFolder "${libFolder}")
    if(TVX_WOBJ_LIBRARY MATCHES "\\.[dD][lL][lL]$")
      set(projectLibraryFolder "${CMAKE_INSTALL_BINDIR}")
    endif()
    install(CODE "file(INSTALL \"${TVX_WOBJ_LIBRARY}\" TYPE SHARED_LIBRARY FOLLOW_SYMLINK_CHAIN
      DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${projectLibraryFolder}\")"
        COMPONENT "${runtime}" ${ARGN})
  else()
    list(APPEND libraries tvx_wobj)
  endif()
  install(TARGETS ${libraries} EXPORT "${name}Targets"
      RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT "${runtime}" ${ARGN}
      LIBRARY DESTINATION "${libFolder}" COMPONENT "${runtime}" NAMELINK_COMPONENT "${development}" ${ARGN}
      ARCHIVE DESTINATION "${libFolder}" COMPONENT "${development}" ${ARGN}
      INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv")

  # The public headers, and those they include.
  install(FILES
      src/interface/hostStrings.h
      src/interface/IDraftelProjectConverter.h
      src/interface/ITarnetProjectConverter.h
      src/interface/libraryApi.h
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/interface" COMPONENT "${development}" ${ARGN})
  install(FILES src/platform/export.h
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/platform" COMPONENT "${development}" ${ARGN})
  install(FILES dsnreader/dsnreader.h
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvxconv/dsnreader" COMPONENT "${development}" ${ARGN})
  install(FILES tvx_wobj/tvx_wobj.h
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tvx_wobj" COMPONENT "${development}" ${ARGN})

  # For find_package(tvxconv): the targets tvxconv::tvxconv and tvxconv::tvx_wobj.
  install(EXPORT "${name}Targets" NAMESPACE tvxconv:: FILE tvxconvTargets.cmake
      DESTINATION "${packageFolder}" COMPONENT "${development}" ${ARGN})
  configure_package_config_file(cmake/tvxconvConfig.cmake.in "${generated}/tvxconvConfig.cmake"
      INSTALL_DESTINATION "${packageFolder}"
      NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file("${generated}/tvxconvConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
  install(FILES "${generated}/tvxconvConfig.cmake" "${generated}/tvxconvConfigVersion.cmake"
      DESTINATION "${packageFolder}" COMPONENT "${development}" ${ARGN})

  # For pkg-config, which knows the folder of the file and nothing else.
  cmake_path(ABSOLUTE_PATH libFolder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE libFullFolder)
  set(pkgConfigFullFolder "${libFullFolder}/pkgconfig")
  file(RELATIVE_PATH prefixFromPkgConfig "${pkgConfigFullFolder}" "${CMAKE_INSTALL_PREFIX}")
  string(REGEX REPLACE "/$" "" prefixFromPkgConfig "${prefixFromPkgConfig}")
  file(RELATIVE_PATH includesFromPkgConfig "${pkgConfigFullFolder}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
  configure_file(cmake/tvxconv.pc.in "${generated}/tvxconv.pc" @ONLY)
  install(FILES "${generated}/tvxconv.pc"
      DESTINATION "${libFolder}/pkgconfig" COMPONENT "${development}" ${ARGN})
endfunction()

installLayout(tvxconv "${CMAKE_INSTALL_LIBDIR}" runtime development program)

# What there is to read and to try. Whoever unpacks it on Windows finds it in the first folder.
set(documentFolder "${CMAKE_INSTALL_DATAROOTDIR}/doc/tvxconv")
if(WIN32)
  set(documentFolder ".")
endif()
install(FILES CHANGELOG.md LICENSE README.md DESTINATION "${documentFolder}" COMPONENT documents)
install(DIRECTORY docs examples DESTINATION "${documentFolder}" COMPONENT documents)

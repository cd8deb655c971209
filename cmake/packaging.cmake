# What "cpack" makes of a build: three Debian packages (library, development files, program), for Windows a zip of
# all that "cmake --install" puts in place.

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_CONTACT "tvxconv maintainers <maintainers@tvxconv.example>" CACHE STRING
    "Who the packages name as their maintainer")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # would stand before the description of each package
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/packagedFolders.cmake")

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME "windows-${CMAKE_SYSTEM_PROCESSOR}")
  # What was linked in comes with its licence.
  foreach(package nlohmann-json3-dev libcli11-dev mingw-w64-x86-64-dev g++-mingw-w64-x86-64-posix)
    if(EXISTS "/usr/share/doc/${package}/copyright")
      file(REAL_PATH "/usr/share/doc/${package}/copyright" licence)
      install(FILES "${licence}" DESTINATION licenses RENAME "${package}.txt" COMPONENT documents)
    endif()
  endforeach()
  include(CPack)
  return()
elseif(NOT debianLibFolder)
  set(CPACK_GENERATOR TGZ)
  include(CPack)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE tvxconv)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debianVersion "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

# Each package is a component of the same name.
set(runtime "libtvxconv${PROJECT_VERSION_MAJOR}")
set(development libtvxconv-dev)
set(program tvxconv)
set(CPACK_COMPONENTS_ALL "${runtime}" "${development}" "${program}")
installLayout(debian "${debianLibFolder}" "${runtime}" "${development}" "${program}" EXCLUDE_FROM_ALL)

# What a package needs is read from its programs and libraries. While packing, our own libraries lie in the build
# folder and in no package; the package that they come in has to be the one that was built with them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
if(TVX_WOBJ_LIBRARY)
  cmake_path(GET TVX_WOBJ_LIBRARY PARENT_PATH projectLibraryFolder)
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${projectLibraryFolder}")
endif()
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# installCompressed(FILE FOLDER NAME COMPONENT): without a time in it, so that two packages of one build are the same.
function(installCompressed file folder name component)
  set(compressed "${CMAKE_CURRENT_BINARY_DIR}/debian/${name}")
  install(CODE "execute_process(COMMAND gzip -9nc \"${PROJECT_SOURCE_DIR}/${file}\"
    OUTPUT_FILE \"${compressed}\" COMMAND_ERROR_IS_FATAL ANY)"
      COMPONENT "${component}" EXCLUDE_FROM_ALL)
  install(FILES "${compressed}" DESTINATION "${folder}" COMPONENT "${component}" EXCLUDE_FROM_ALL)
endfunction()

# describePackage(COMPONENT SECTION SUMMARY CONTENTS [DEPENDS...])
function(describePackage component section summary contents)
  string(TOUPPER "${component}" key)
  set("CPACK_DEBIAN_${key}_PACKAGE_NAME" "${component}" PARENT_SCOPE)
  set("CPACK_DEBIAN_${key}_PACKAGE_SECTION" "${section}" PARENT_SCOPE)
  set("CPACK_COMPONENT_${key}_DEPENDS" "${ARGN}" PARENT_SCOPE)
  string(JOIN "\n" description
      "${summary}"
      "Moves the simulation files of Draftel design projects and Tarnet design"
      "libraries out of the old, flat layout into folders for each schematic and"
      "each profile, and rewrites the references that the move would break."
      "."
      "${contents}")
  set("CPACK_DEBIAN_${key}_DESCRIPTION" "${description}" PARENT_SCOPE)

  # Each package says under what licence it is, and what has changed.
  set(folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/${component}")
  install(FILES cmake/debian/copyright DESTINATION "${folder}" COMPONENT "${component}" EXCLUDE_FROM_ALL)
  installCompressed(CHANGELOG.md "${folder}" changelog.gz "${component}")
  installCompressed(cmake/debian/changelog "${folder}" changelog.Debian.gz "${component}")
endfunction()

describePackage("${runtime}" libs "converter of simulation files - library"
    "This package contains the library, and the readers of projects and designs\nthat it uses.")
describePackage("${development}" libdevel "converter of simulation files - development files"
    "This package contains what is needed to compile programs with the library." "${runtime}")
describePackage("${program}" electronics "converter of simulation files - program"
    "This package contains the program for the command line." "${runtime}")

# Other packages that are built with the library learn from this what they depend on. The interface may change
# with any version, so it is the very one.
string(TOUPPER "${runtime}" key)
configure_file(cmake/debian/shlibs.in "${CMAKE_CURRENT_BINARY_DIR}/debian/shlibs" @ONLY)
set("CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA"
    "${CMAKE_CURRENT_BINARY_DIR}/debian/shlibs" "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")

set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc")
install(FILES docs/hosting.md
    DESTINATION "${documents}/${development}" COMPONENT "${development}" EXCLUDE_FROM_ALL)
install(DIRECTORY examples/host
    DESTINATION "${documents}/${development}/examples" COMPONENT "${development}" EXCLUDE_FROM_ALL)
install(FILES README.md DESTINATION "${documents}/${program}" COMPONENT "${program}" EXCLUDE_FROM_ALL)
install(FILES docs/formats.md
    DESTINATION "${documents}/${program}/docs" COMPONENT "${program}" EXCLUDE_FROM_ALL)
install(DIRECTORY examples/amp examples/models examples/tarnet
    DESTINATION "${documents}/${program}/examples" COMPONENT "${program}" EXCLUDE_FROM_ALL)

include(CPack)

# The Debian package that script/package makes: the component runtime, that is the program and its documents.
set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};${PROJECT_NAME};runtime;/")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_PACKAGE_NAME displacement-generator)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0local1) # older than any revision of Debian's own
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "displacement_generator maintainers <maintainers@example.org>"
    CACHE STRING "Maintainer field of the Debian package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "displaced Gaussian inputs for force-difference frequencies")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Reads a Gaussian input with one molecule in Cartesian coordinates, finds which
of the eight abelian point groups it has about the axes of its coordinates, and
writes one input for each displaced geometry that has to be computed. Those
that follow from another one by symmetry are left out; a table tells how.
displacement_preparer makes such an input from other files of Gaussian, and
displacement_assembler computes the frequencies from the results.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DOCDIR ${CMAKE_INSTALL_DOCDIR})
set(CPACK_MANDIR ${CMAKE_INSTALL_MANDIR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_documents.cmake)

include(CPack)

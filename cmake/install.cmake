# What cmake --install lays down: the program with its documents (component runtime), and the libraries with their
# headers (component development).
include(CMakePackageConfigHelpers)

set(programs displacement_generator displacement_preparer displacement_assembler)
install(TARGETS ${programs} COMPONENT runtime)

# Markdown keeps its links to one another: README.md stands above docs/ and examples/, as it does here.
foreach(program IN LISTS programs)
  configure_file(docs/${program}.1 ${PROJECT_BINARY_DIR}/docs/${program}.1 @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/docs/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
endforeach()
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime USE_SOURCE_PERMISSIONS
        PATTERN PES-0 EXCLUDE PATTERN __pycache__ EXCLUDE)

set(rooms base file element gjf symmetry)
set(base_headers array error fixed_columns free_format text)
foreach(room IN LISTS rooms)
  if(NOT DEFINED ${room}_headers)
    set(${room}_headers ${room})
  endif()
  list(TRANSFORM ${room}_headers REPLACE "(.+)" "lib/${room}/\\1.hpp")
  install(FILES ${${room}_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/displacement_generator/${room}
          COMPONENT development)
endforeach()

set(config ${CMAKE_INSTALL_LIBDIR}/cmake/displacement_generator)
install(TARGETS ${rooms} EXPORT targets COMPONENT development)
install(EXPORT targets NAMESPACE displacement_generator:: FILE displacement_generator-config.cmake DESTINATION ${config}
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/displacement_generator-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/displacement_generator-config-version.cmake DESTINATION ${config}
        COMPONENT development)

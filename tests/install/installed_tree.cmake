# Installs the build tree BUILD into an empty place, moves it, and uses what is there: builds and runs consumer/ against
# the libraries, runs the program, and looks at the manual page.
cmake_minimum_required(VERSION 3.25)

function(run expected)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "status ${status} from: ${ARGN}\n${output}${errors}")
  endif()
  if(NOT expected STREQUAL "anything" AND NOT "${output}${errors}" STREQUAL expected)
    message(FATAL_ERROR "expected '${expected}', found '${output}${errors}' from: ${ARGN}")
  endif()
endfunction()

set(first ${SCRATCH}/first)
set(prefix ${SCRATCH}/moved)
file(REMOVE_RECURSE ${SCRATCH})
run(anything ${CMAKE_COMMAND} --install ${BUILD} --prefix ${first})
file(RENAME ${first} ${prefix})

# Another project's program, compiled and linked as the libraries were.
set(flags ${FLAGS})
if(SANITIZE)
  string(APPEND flags " -fsanitize=${SANITIZE}")
endif()
run(anything ${CMAKE_COMMAND} -S ${SOURCE}/tests/install/consumer -B ${SCRATCH}/consumer -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${flags} -DVERSION=${VERSION})
run(anything ${CMAKE_COMMAND} --build ${SCRATCH}/consumer)
set(example ${prefix}/${DOCDIR}/examples/water)
run("mol.gjf: 10 lines, 3 atoms, unit 100, operation   I, group  CI, symbol O\n" ${SCRATCH}/consumer/consumer ${example}/mol.gjf)

# The program, on an installed example: the list of a complete run, and nothing printed.
run("" ${CMAKE_COMMAND} -E chdir ${example} ${prefix}/${BINDIR}/displacement_generator control)
file(STRINGS ${example}/PES-0/files.out list)
list(GET list -1 last)
if(NOT last STREQUAL "End_vesk_info")
  message(FATAL_ERROR "expected 'End_vesk_info' at the end of files.out, found '${last}'")
endif()

# The preparer, on the same example: its report, and the input that it is said to write.
run("displacement_preparer ${VERSION}\n" ${prefix}/${BINDIR}/displacement_preparer --version)
run("mol.gjf: Gaussian input of 1 job: 3 atoms, charge 0, multiplicity 1
group C2v as written, C2v now; no atom moved by more than 0.000000 angstrom
9 of 18 displacements to compute (9 as written)
route: #p b3lyp/6-31g(d) force nosymm
" ${CMAKE_COMMAND} -E chdir ${example} ${prefix}/${BINDIR}/displacement_preparer -o prepared.gjf mol.gjf)
file(STRINGS ${example}/prepared.gjf prepared)
list(GET prepared 1 route)
if(NOT route STREQUAL "#p b3lyp/6-31g(d) force nosymm")
  message(FATAL_ERROR "expected the route in line 2 of what was prepared, found '${route}'")
endif()

# The assembler, on two hydrogen atoms and a spring of 0.37 hartree/bohr^2: 4404.8139 cm-1 by the formula of two masses.
run("displacement_assembler ${VERSION}\n" ${prefix}/${BINDIR}/displacement_assembler --version)
set(hydrogen ${SCRATCH}/hydrogen)
file(WRITE ${hydrogen}/mol.gjf "#p hf/3-21g force nosymm\n\nhydrogen\n\n0 1\nH 0 0 -0.37\nH 0 0 0.37\n\n")
file(WRITE ${hydrogen}/control "&control fxyz = 'mol.gjf', dx = 0.005 /\n")
run("" ${CMAKE_COMMAND} -E chdir ${hydrogen} ${prefix}/${BINDIR}/displacement_generator control)
file(WRITE ${hydrogen}/PES-0/coord-0-00.forces "0 0 0\n0 0 0\n")
file(WRITE ${hydrogen}/PES-0/coord-1-dx.forces "0.0000001 0 0\n-0.0000001 0 0\n")
file(WRITE ${hydrogen}/PES-0/coord-1-dy.forces "0 0.0000001 0\n0 -0.0000001 0\n")
file(WRITE ${hydrogen}/PES-0/coord-1-dz.forces "0 0 0.0034959933306\n0 0 -0.0034959933306\n")
file(WRITE ${hydrogen}/PES-0/coord-1+dz.forces "0 0 -0.0034959933306\n0 0 0.0034959933306\n")
execute_process(
  COMMAND ${prefix}/${BINDIR}/displacement_assembler --molden modes ${hydrogen}
  WORKING_DIRECTORY ${hydrogen}
  OUTPUT_VARIABLE table
  ERROR_VARIABLE notices
  RESULT_VARIABLE status)
if(NOT status EQUAL 0
   OR NOT table MATCHES "\n    1 Ag     4404\\.8139 "
   OR table MATCHES "\n    2 "
   OR NOT notices STREQUAL
      "${hydrogen}/PES-0/files.out: notice: the .forces files hold no energies: nothing shows whether they are of these geometries\n${hydrogen}/PES-0/files.out: notice: no intensities: ${hydrogen}/PES-0/coord-1-dx.forces has no dipole moment\n")
  message(FATAL_ERROR "status ${status} from the assembler, expected one mode of 4404.8139 cm-1, found\n${table}${notices}")
endif()
file(STRINGS ${hydrogen}/modes modes)
if(NOT modes MATCHES "vibration 1;")
  message(FATAL_ERROR "expected a vibration in the file of modes, found '${modes}'")
endif()

# The manual pages: the version is there, and man has nothing to say against them.
find_program(man man)
if(NOT man)
  message("man is not installed: the manual pages were not formatted")
endif()
foreach(program displacement_generator displacement_preparer displacement_assembler)
  set(page ${prefix}/${MANDIR}/man1/${program}.1)
  file(READ ${page} text)
  if(NOT text MATCHES "displacement_generator ${VERSION}" OR text MATCHES "@")
    message(FATAL_ERROR "expected the version ${VERSION} and no '@' in ${page}")
  endif()
  if(man)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C.UTF-8 MANWIDTH=80 ${man} --warnings -l ${page}
                    OUTPUT_QUIET ERROR_VARIABLE warnings RESULT_VARIABLE status)
    if(NOT status EQUAL 0 OR NOT warnings STREQUAL "")
      message(FATAL_ERROR "man: status ${status}\n${warnings}")
    endif()
  endif()
endforeach()

# Every link from one installed document to another leads somewhere.
file(GLOB_RECURSE documents ${prefix}/${DOCDIR}/*.md)
list(LENGTH documents count)
if(count LESS 10)
  message(FATAL_ERROR "${count} documents are installed")
endif()
foreach(document IN LISTS documents)
  file(READ ${document} text)
  string(REPLACE "](" "<link " text "${text}")  # a bracket would keep the list of links together
  string(REGEX MATCHALL "<link [^)#:]+" links "${text}")
  get_filename_component(folder ${document} DIRECTORY)
  foreach(link IN LISTS links)
    string(REPLACE "<link " "" target ${link})
    if(NOT EXISTS ${folder}/${target})
      message(FATAL_ERROR "${document} links to ${target}, which is not installed")
    endif()
  endforeach()
endforeach()
file(REMOVE_RECURSE ${SCRATCH})

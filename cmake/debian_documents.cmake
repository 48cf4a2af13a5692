# Run by CPack between the installation and the packing: what Debian wants to find in a package beside the program.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(documents ${usr}/${CPACK_DOCDIR})

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog.Debian
     "${CPACK_DEBIAN_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; the changelog tells what is new.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")
file(WRITE ${documents}/copyright
     "displacement_generator

Copyright (C) 2026 the maintainers of displacement_generator.
License: none has been stated. Until one is, all rights are reserved.

The program contains parts of the GNU C++ library and of libgcc.
Copyright (C) Free Software Foundation, Inc.
License: GPL version 3 or later with the GCC Runtime Library Exception 3.1; the
GPL is in /usr/share/common-licenses/GPL-3.
")
file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
execute_process(COMMAND gzip -9n ${documents}/changelog ${documents}/changelog.Debian
                        ${usr}/${CPACK_MANDIR}/man1/displacement_generator.1 COMMAND_ERROR_IS_FATAL ANY)
file(GLOB written ${documents}/changelog* ${documents}/copyright)
file(CHMOD ${written} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

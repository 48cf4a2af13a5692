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

displacement_preparer and displacement_assembler contain parts of Eigen.
Copyright (C) 2006-2013 Benoit Jacob, Gael Guennebaud and others.
License: MPL 2.0, in /usr/share/common-licenses/MPL-2.0; the source is that of
the Debian package libeigen3-dev.

displacement_preparer and displacement_assembler contain parts of CLI11.
Copyright (C) 2017-2020 University of Cincinnati, developed by Henry Schreiner
under NSF AWARD 1414736.
License: BSD-3-clause:

Redistribution and use in source and binary forms, with or without
modification, are permitted provided that the following conditions
are met:
1. Redistributions of source code must retain the above copyright
   notice, this list of conditions and the following disclaimer.
2. Redistributions in binary form must reproduce the above copyright
   notice, this list of conditions and the following disclaimer in the
   documentation and/or other materials provided with the distribution.
3. Neither the name of the University nor the names of its contributors
   may be used to endorse or promote products derived from this software
   without specific prior written permission.

THIS SOFTWARE IS PROVIDED BY THE REGENTS AND CONTRIBUTORS ``AS IS'' AND
ANY EXPRESS OR IMPLIED WARRANTIES, INCLUDING, BUT NOT LIMITED TO, THE
IMPLIED WARRANTIES OF MERCHANTABILITY AND FITNESS FOR A PARTICULAR PURPOSE
ARE DISCLAIMED.  IN NO EVENT SHALL THE REGENTS OR CONTRIBUTORS BE LIABLE
FOR ANY DIRECT, INDIRECT, INCIDENTAL, SPECIAL, EXEMPLARY, OR CONSEQUENTIAL
DAMAGES (INCLUDING, BUT NOT LIMITED TO, PROCUREMENT OF SUBSTITUTE GOODS
OR SERVICES; LOSS OF USE, DATA, OR PROFITS; OR BUSINESS INTERRUPTION)
HOWEVER CAUSED AND ON ANY THEORY OF LIABILITY, WHETHER IN CONTRACT, STRICT
LIABILITY, OR TORT (INCLUDING NEGLIGENCE OR OTHERWISE) ARISING IN ANY WAY
OUT OF THE USE OF THIS SOFTWARE, EVEN IF ADVISED OF THE POSSIBILITY OF
SUCH DAMAGE.
")
file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
file(GLOB pages ${usr}/${CPACK_MANDIR}/man1/*.1)
execute_process(COMMAND gzip -9n ${documents}/changelog ${documents}/changelog.Debian ${pages}
                COMMAND_ERROR_IS_FATAL ANY)
file(GLOB written ${documents}/changelog* ${documents}/copyright)
file(CHMOD ${written} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` adds beyond the programs and desktop files, and the Debian
# package that `cpack -G DEB` builds from the same install tree:
#   share/man/man1               quarbel.1.gz, quarbel-gui.1.gz
#   share/bash-completion/...    completions for both programs
#   lib/systemd/system           quarbel-benchmark.service and .timer (never enabled)
#   lib/udev/rules.d             60-quarbel-powercap.rules: the quarbel group reads RAPL energy
#   share/doc/quarbel            copyright, changelog.gz
# The package alone also carries /etc/default/quarbel: a plain `cmake --install --prefix DIR`
# never writes outside DIR.

set(QUARBEL_PACKAGING_DIR ${PROJECT_SOURCE_DIR}/packaging)

# gzip -n: no name or time stamp in the header, so the files are the same on every build.
find_program(QUARBEL_GZIP gzip REQUIRED)
function(quarbel_install_gzipped source destination)
  get_filename_component(name ${source} NAME)
  set(output ${PROJECT_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packaging
    COMMAND sh -c "\"$1\" -9 -n -c \"$2\" > \"$3\"" gzip ${QUARBEL_GZIP} ${source} ${output}
    DEPENDS ${source}
    COMMENT "Compressing ${name}"
    VERBATIM)
  string(MAKE_C_IDENTIFIER ${name} target)
  add_custom_target(quarbel_gz_${target} ALL DEPENDS ${output})
  install(FILES ${output} DESTINATION ${destination})
endfunction()

quarbel_install_gzipped(${QUARBEL_PACKAGING_DIR}/man/quarbel.1 ${CMAKE_INSTALL_MANDIR}/man1)
quarbel_install_gzipped(${QUARBEL_PACKAGING_DIR}/man/quarbel-gui.1 ${CMAKE_INSTALL_MANDIR}/man1)
quarbel_install_gzipped(${QUARBEL_PACKAGING_DIR}/debian/changelog ${CMAKE_INSTALL_DATADIR}/doc/quarbel)
install(FILES ${QUARBEL_PACKAGING_DIR}/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quarbel)

install(FILES ${QUARBEL_PACKAGING_DIR}/completion/quarbel ${QUARBEL_PACKAGING_DIR}/completion/quarbel-gui
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

set(QUARBEL_SYSTEMD_UNIT_DIR lib/systemd/system CACHE STRING
    "Where the systemd units go, relative to the install prefix")
install(FILES ${QUARBEL_PACKAGING_DIR}/systemd/quarbel-benchmark.service
              ${QUARBEL_PACKAGING_DIR}/systemd/quarbel-benchmark.timer
        DESTINATION ${QUARBEL_SYSTEMD_UNIT_DIR})

install(FILES ${QUARBEL_PACKAGING_DIR}/udev/60-quarbel-powercap.rules DESTINATION lib/udev/rules.d)

# The Debian package: everything under /usr, the defaults file under /etc.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quarbel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Quarbel developers")
set(CPACK_PACKAGE_CONTACT "Quarbel developers <quarbel@users.noreply.github.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "sustained CPU, memory, storage and GPU benchmark suite")
set(CPACK_PACKAGE_DESCRIPTION
    "Quarbel benchmarks this machine with thirteen timed, sustained workloads and
scores them in Quarbel points: CPU integer, floating-point and hashing work,
memory bandwidth, a ray-marched tile renderer, RAW image decoding on the CPU
and the GPU, GPU compute through Vulkan and OpenCL, a real-time Vulkan scene,
and sequential, uncached and random storage access.

The package holds the command line (quarbel), which needs no display, and the
desktop program (quarbel-gui). Every score comes with its 95 % interval, runs
are kept in a local history and compared with statistical verdicts, and
results can be drawn as PNG cards. Everything stays on this machine.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What the shared libraries do not tell: the GPU benchmarks need a Vulkan driver and an
# OpenCL platform. Mesa's lavapipe and PoCL run them on the CPU where there is no GPU, so
# they are recommended unless another driver is there. The window uses the Inter font when
# it is installed; the result cards carry their own copy.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "mesa-vulkan-drivers | vulkan-icd, pocl-opencl-icd | opencl-icd, fonts-inter")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "prometheus-node-exporter")
# postinst adds the quarbel group that the udev rule names; postrm removes it on purge.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${QUARBEL_PACKAGING_DIR}/debian/conffiles ${QUARBEL_PACKAGING_DIR}/debian/postinst
    ${QUARBEL_PACKAGING_DIR}/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${QUARBEL_PACKAGING_DIR}/debian/stage-etc.cmake)
set(CPACK_QUARBEL_DEFAULTS_FILE ${QUARBEL_PACKAGING_DIR}/systemd/quarbel.default)
include(CPack)

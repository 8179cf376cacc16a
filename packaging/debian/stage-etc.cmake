# SPDX-License-Identifier: Apache-2.0
# Run by CPack once the install tree is staged: adds /etc/default/quarbel, the settings
# that quarbel-benchmark.service reads, beside the /usr tree. It is a conffile of the
# package, so local changes survive upgrades. A plain `cmake --install` never gets it.
if(NOT CPACK_QUARBEL_DEFAULTS_FILE OR NOT CPACK_TEMPORARY_DIRECTORY)
  message(FATAL_ERROR "stage-etc.cmake runs inside CPack only")
endif()
configure_file(${CPACK_QUARBEL_DEFAULTS_FILE} ${CPACK_TEMPORARY_DIRECTORY}/etc/default/quarbel COPYONLY
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# SPDX-License-Identifier: Apache-2.0
# Warnings as errors and the optional sanitizers, applied to every Quarbel target
# through quarbel_configure_target().
set(QUARBEL_SANITIZE_FLAGS "")
foreach(sanitizer IN LISTS QUARBEL_SANITIZE)
  list(APPEND QUARBEL_SANITIZE_FLAGS "-fsanitize=${sanitizer}")
endforeach()
if(QUARBEL_SANITIZE_FLAGS)
  list(APPEND QUARBEL_SANITIZE_FLAGS -fno-omit-frame-pointer -fno-sanitize-recover=all)
endif()

function(quarbel_configure_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                           -Wno-sign-conversion -Wnon-virtual-dtor -Werror)
  if(QUARBEL_SANITIZE_FLAGS)
    target_compile_options(${target} PRIVATE ${QUARBEL_SANITIZE_FLAGS})
    target_link_options(${target} PRIVATE ${QUARBEL_SANITIZE_FLAGS})
  endif()
endfunction()

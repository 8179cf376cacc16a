# SPDX-License-Identifier: Apache-2.0
# Turns one text file into a C++ header holding it as a raw string literal:
#   cmake -DINPUT=<file> -DOUTPUT=<header> -DSYMBOL=<name> -P embed_text.cmake
file(READ "${INPUT}" content)
get_filename_component(source_name "${INPUT}" NAME)
string(FIND "${content}" ")quarbel_text\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${INPUT} contains the raw-string delimiter")
endif()
file(WRITE "${OUTPUT}.tmp"
  "// Generated from ${source_name} at build time; edit that file instead.\n"
  "#pragma once\n\n#include <string_view>\n\n"
  "namespace quarbel::gpu::shaders {\n"
  "inline constexpr std::string_view ${SYMBOL} = R\"quarbel_text(${content})quarbel_text\";\n"
  "} // namespace quarbel::gpu::shaders\n")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")

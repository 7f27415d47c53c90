# Run at build time by orvane_embed_assets: FILES, NAMESPACE, OUTPUT.
set(text "// Made by the build from files; edit those.\n#pragma once\n\n#include <string_view>\n\n")
string(APPEND text "namespace ${NAMESPACE} {\n\n")
foreach(path IN LISTS FILES)
  file(READ "${path}" bytes HEX)
  # One escape per byte; a string literal is much quicker to compile than a list of characters.
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${bytes}")
  string(REGEX REPLACE "((\\\\x..)(\\\\x..)(\\\\x..)(\\\\x..)(\\\\x..)(\\\\x..)(\\\\x..)(\\\\x..))"
                       "\\1\"\n    \"" bytes "${bytes}")
  file(SIZE "${path}" size)
  get_filename_component(name "${path}" NAME)
  string(MAKE_C_IDENTIFIER "${name}" name)
  string(APPEND text "inline constexpr std::string_view ${name}(\n    \"${bytes}\",\n    ${size});\n\n")
endforeach()
file(WRITE "${OUTPUT}" "${text}}  // namespace ${NAMESPACE}\n")

# orvane_embed_assets(<target> NAMESPACE <namespace> HEADER <file name> FILES <path>...)
# Makes a header in which each file is a constexpr std::string_view: report.css becomes report_css.
# The header belongs to <target> and is made anew when a file changes.
function(orvane_embed_assets target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAMESPACE;HEADER" "FILES")
  set(step "${PROJECT_SOURCE_DIR}/cmake/EmbedAssetsStep.cmake")
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/generated")
  add_custom_command(
    OUTPUT "${generated}/${arg_HEADER}"
    COMMAND "${CMAKE_COMMAND}" "-DOUTPUT=${generated}/${arg_HEADER}"
            "-DNAMESPACE=${arg_NAMESPACE}" "-DFILES=${arg_FILES}" -P "${step}"
    DEPENDS ${arg_FILES} "${step}"
    COMMENT "Embedding the files of ${arg_HEADER}"
    VERBATIM)
  # A rule of its own, because the target may belong to another folder.
  add_custom_target(${target}_${arg_HEADER} DEPENDS "${generated}/${arg_HEADER}")
  add_dependencies(${target} ${target}_${arg_HEADER})
  target_include_directories(${target} PRIVATE "${generated}")
endfunction()

# The manual pages and completions, written by orxkdb itself from its command line, from the help
# texts of orxrestore and from the document about the formats.
set(manual_directory "${CMAKE_BINARY_DIR}/man")
set(completion_directory "${CMAKE_BINARY_DIR}/completion")
set(manual_pages "${manual_directory}/orxkdb.1" "${manual_directory}/orxrestore.1"
                 "${manual_directory}/orxkdb-formats.5")
set(formats_document "${CMAKE_SOURCE_DIR}/docs/formats.md")
file(MAKE_DIRECTORY "${manual_directory}" "${completion_directory}")

# The help texts lie in the message bundle, which the build makes in its own directory.
foreach(page IN LISTS manual_pages)
  get_filename_component(name "${page}" NAME_WE)
  add_custom_command(
    OUTPUT "${page}"
    COMMAND orxkdb --man "${name}" < "${formats_document}" > "${page}"
    DEPENDS orxkdb "${formats_document}"
    WORKING_DIRECTORY "${CMAKE_BINARY_DIR}"
    VERBATIM)
endforeach()

set(completions "")
function(add_completion option shell name)
  add_custom_command(
    OUTPUT "${completion_directory}/${name}"
    COMMAND orxkdb "${option}" "${shell}" > "${completion_directory}/${name}"
    DEPENDS orxkdb
    WORKING_DIRECTORY "${CMAKE_BINARY_DIR}"
    VERBATIM)
  list(APPEND completions "${completion_directory}/${name}")
  set(completions "${completions}" PARENT_SCOPE)
endfunction()
foreach(pair "--completion orxkdb" "--restore-completion orxrestore")
  separate_arguments(pair)
  list(GET pair 0 option)
  list(GET pair 1 program)
  add_completion("${option}" bash "${program}.bash")
  add_completion("${option}" zsh "_${program}")
  add_completion("${option}" fish "${program}.fish")
endforeach()

add_custom_target(orx_manual ALL DEPENDS ${manual_pages} ${completions})

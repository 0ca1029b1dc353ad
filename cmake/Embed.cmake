# orbis_embed( TARGET NAMESPACE VARIABLE FILE ): a text becomes a part of the target, as a header declares:
# extern const std::string_view VARIABLE.
# orbis_embed( TARGET NAMESPACE VARIABLE FILE... ): the same of several, with their names:
# extern const std::span<const std::pair<std::string_view, std::string_view>> VARIABLE.
function( orbis_embed target namespace variable )
   set( source ${CMAKE_CURRENT_BINARY_DIR}/${variable}.cpp )
   set( script ${PROJECT_SOURCE_DIR}/cmake/WriteEmbedded.cmake )
   add_custom_command(
      OUTPUT ${source}
      COMMAND ${CMAKE_COMMAND} -P ${script} ${source} ${namespace} ${variable} ${ARGN}
      DEPENDS ${script} ${ARGN}
      VERBATIM )
   set_source_files_properties( ${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON )
   target_sources( ${target} PRIVATE ${source} )
endfunction()

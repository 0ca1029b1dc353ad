# cmake -P WriteEmbedded.cmake SOURCE NAMESPACE VARIABLE FILE...: writes the source of orbis_embed(). Raw text
# compiles at once; a list of a hundred thousand numbers takes seconds.
set( source ${CMAKE_ARGV3} )
set( namespace ${CMAKE_ARGV4} )
set( variable ${CMAKE_ARGV5} )
set( text "#include <span>\n#include <string_view>\n#include <utility>\n\n" )
string( APPEND text "namespace ${namespace} {\n"
   "using namespace std::literals;\n"
   "static constexpr std::pair<std::string_view, std::string_view> files[] = {\n" )
math( EXPR last "${CMAKE_ARGC} - 1" )
foreach( i RANGE 6 ${last} )
   set( file ${CMAKE_ARGV${i}} )
   file( READ ${file} content )
   string( FIND "${content}" ")embedded\"" end )
   if( NOT end EQUAL -1 )
      message( FATAL_ERROR "${file} has the characters )embedded\", which end a text that is embedded" )
   endif()
   get_filename_component( name ${file} NAME )
   string( APPEND text "{ \"${name}\"sv, R\"embedded(${content})embedded\"sv },\n" )
endforeach()
string( APPEND text "};\n"
   "extern const std::span<const std::pair<std::string_view, std::string_view>> ${variable};\n"
   "const std::span<const std::pair<std::string_view, std::string_view>> ${variable}( files );\n"
   "} // namespace ${namespace}\n" )
file( WRITE ${source} "${text}" )

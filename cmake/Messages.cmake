# orbis_messages( NAME FOLDER PROTO... ): a library of generated messages, from the .proto files of a
# folder below the project's root. Generated code is compiled without our warnings.
function( orbis_messages name folder )
   set( generated ${CMAKE_BINARY_DIR}/generated )
   foreach( proto ${ARGN} )
      string( REPLACE .proto .pb file ${generated}/${folder}/${proto} )
      add_custom_command(
         OUTPUT ${file}.cc ${file}.h
         COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}
         COMMAND protobuf::protoc --cpp_out=${generated} -I${CMAKE_SOURCE_DIR} -I${CMAKE_SOURCE_DIR}/platform
            ${folder}/${proto}
         DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/${proto} ${CMAKE_SOURCE_DIR}/platform/OrbisUtil/Smbus.proto
         WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
         VERBATIM )
      list( APPEND files ${file}.cc ${file}.h )
   endforeach()
   add_library( ${name} STATIC ${files} )
   target_include_directories( ${name} SYSTEM PUBLIC ${generated} )
   target_link_libraries( ${name} PUBLIC protobuf::libprotobuf )
endfunction()

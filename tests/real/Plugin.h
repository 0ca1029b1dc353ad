// The driver plug-in in the process of the test.
#pragma once

#include <pl.h>

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace RealTest {

// One of its exported functions: plugin<decltype( pl_fan_add )>( "pl_fan_add" )( ... ).
template <typename Function>
Function *plugin( const char *name ) {
   static void *const library = dlopen( PLUGIN, RTLD_NOW );
   if ( !library )
      throw std::runtime_error( dlerror() );
   return reinterpret_cast<Function *>( dlsym( library, name ) );
}

} // namespace RealTest

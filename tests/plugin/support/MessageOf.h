// The message of the exception that a call throws.
#pragma once

#include <exception>
#include <string>

template <typename Call>
std::string messageOf( Call call ) {
   try {
      call();
   } catch ( const std::exception &e ) {
      return e.what();
   }
   return "nothing thrown";
}

// The objects of a board, brought up in the plug-in as a host brings them up.
#pragma once

#include "Operations.h"

#include <string>

class Objects {
 public:
   // Loads the plug-in and brings up every object of the board's folder. Throws with the dynamic
   // linker's or the board reader's words.
   Objects( const std::string &plugin, const std::string &board );

   // By the objects' types, so that one of many cages is not asked more often than the one of a
   // kind.
   const std::vector<Operations> &operationsByType() const { return operations_; }
   pl_system *system() const { return system_; }

 private:
   std::vector<Operations> operations_;
   pl_system *system_ = nullptr;
};

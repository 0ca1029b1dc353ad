// The objects of a board, brought up in the plug-in like by a host.
#pragma once

#include "Operations.h"

#include <string>

class Objects {
 public:
   // Loads the plug-in and brings up every object of the board's folder. Throws the error of the
   // dynamic linker or of the board reader.
   Objects( const std::string &plugin, const std::string &board );

   // Grouped by the types of the objects, so that a random choice is not mostly one of the many
   // cages.
   const std::vector<Operations> &operationsByType() const { return operations_; }
   pl_system *system() const { return system_; }

 private:
   std::vector<Operations> operations_;
   pl_system *system_ = nullptr;
};

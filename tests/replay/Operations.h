// What can be asked of the host's records, each operation with arguments of its own choice.
#pragma once

#include "Random.h"
#include "pl.h"

#include <functional>
#include <string>
#include <vector>

struct Operation {
   std::string words;                          // object and operation
   std::function<std::string( Random & )> run; // what it was given and what came of it
};
using Operations = std::vector<Operation>;

Operations operationsOf( const std::string &name, pl_slot * );
Operations operationsOf( const std::string &name, pl_led * );
Operations operationsOf( const std::string &name, pl_temp_sensor * );
Operations operationsOf( const std::string &name, pl_fan * );
Operations operationsOf( const std::string &name, pl_psu * );
Operations operationsOf( const std::string &name, pl_gpio * );
Operations operationsOf( const std::string &name, pl_xcvr * );
Operations operationsOf( const std::string &name, pl_smbus * );
Operations operationsOf( const std::string &name, pl_system * );

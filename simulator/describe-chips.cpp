// Prints boards/simulation.schema.json; packaging/renew-schema puts it there.
#include "simulator/board/ChipKinds.h"

#include <cstdio>

int main() { std::fputs( Simulator::simulationSchemaText().c_str(), stdout ); }

// boards/*.schema.json, as they were when the program was built.
#pragma once

#include <string_view>

namespace BoardFiles {

extern const std::string_view topologySchema;
extern const std::string_view simulationSchema;
extern const std::string_view routesSchema;
extern const std::string_view registersSchema;
extern const std::string_view writesSchema;
extern const std::string_view panelSchema;
extern const std::string_view safeStateSchema;
extern const std::string_view objectsSchema;
extern const std::string_view driversSchema;

} // namespace BoardFiles

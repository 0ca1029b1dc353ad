#pragma once

#include <rapidjson/document.h>

#include <string>

// The place where a JSON text breaks boards/state.schema.json, and the rule. Empty when it is
// valid.
std::string stateSchemaFault( const std::string &json );
// The same of boards/NAME.schema.json.
std::string schemaFault( const std::string &json, const std::string &name );

rapidjson::Document parsedFile( const std::string &path );

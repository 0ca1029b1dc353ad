#pragma once

#include <rapidjson/document.h>

#include <string>

// Where a JSON text doesn't fit boards/state.schema.json, and which rule it breaks; empty when it
// fits.
std::string stateSchemaFault( const std::string &json );

rapidjson::Document parsedFile( const std::string &path );

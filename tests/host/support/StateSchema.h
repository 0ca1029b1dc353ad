#pragma once

#include <rapidjson/document.h>

#include <string>

// The place where a JSON text breaks boards/state.schema.json, and the rule. Empty when it is
// valid.
std::string stateSchemaFault( const std::string &json );

rapidjson::Document parsedFile( const std::string &path );

// A fixture with the plug-in in the state right after a host has loaded it.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "support/FakeServer.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

class PluginFixture : public ::testing::Test {
 protected:
   PluginFixture();
   ~PluginFixture() override;

   // Loads a topology. The text has ' in place of ".
   static void load( std::string topology );
   // Replaces ' by " and keeps the text until the process ends, as a host does.
   static const char *json( std::string text );
   // Connects the plug-in and loads this topology.
   static void connect( std::string topology );
};

// The topology of an I2C bus 0 with these devices.
std::string i2cTopology( const std::string &devices );

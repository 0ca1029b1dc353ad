// A fixture with the plug-in as it is when a host has just loaded it.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "support/FakeServer.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

class PluginFixture : public ::testing::Test {
 protected:
   PluginFixture();
   ~PluginFixture() override;

   // Loads a topology whose text is given with ' for ".
   static void load( std::string topology );
   // Text with ' for ", kept until the process ends as a host keeps it.
   static const char *json( std::string text );
   // Brings the plug-in into working order: connected, this topology loaded.
   static void connect( std::string topology );
};

// An I2C bus 0 whose devices are these objects.
std::string i2cTopology( const std::string &devices );

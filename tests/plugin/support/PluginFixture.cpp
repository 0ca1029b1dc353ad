#include "support/PluginFixture.h"

#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/LibraryInit.h"
#include "OrbisGeneric/Topology.h"

#include <algorithm>
#include <list>

// Objects that are never deleted by design. A test that starts again loses the pointers to them.
extern "C" const char *__lsan_default_suppressions() {
   return "leak:Component::HardwareDevice::make\n"
          "leak:Component::MultiDevice::make\n"
          "leak:Component::addObject\n"
          "leak:newTempSensor\n"
          "leak:newSmbusProxy\n"
          "leak:newGpio\n"
          "leak:newMux\n"
          "leak:pl_xcvr_add\n"
          "leak:Ham::OrbisSmbusVisitor::visit\n"
          "leak:Drivers::insertDriverArg\n";
}

PluginFixture::PluginFixture() {
   TestHost::reset();
   delete _plSock;
   FakeServer::reset();
   _plSock = nullptr;
   Topology::_topology.reset();
   Topology::_topology_index.clear();
   Topology::_topology_label_records.clear();
   Topology::_topology_json.clear();
   Component::DeviceBase::devices.clear();
   using Component::LogicalDevice::Led;
   Led::blinkTimer_ = nullptr;
   Led::blinkStatus_ = false;
   Led::notifyList_.clear();
}

PluginFixture::~PluginFixture() = default;

const char *PluginFixture::json( std::string text ) {
   static std::list<std::string> kept;
   std::replace( text.begin(), text.end(), '\'', '"' );
   return kept.emplace_back( std::move( text ) ).c_str();
}

void PluginFixture::load( std::string topology ) {
   ASSERT_EQ( Topology::loadTopology( json( std::move( topology ) ) ), 0 );
}

void PluginFixture::connect( std::string topology ) {
   ASSERT_EQ( orbisLibraryInit( "test", json( std::move( topology ) ), 1 ), 0 );
   TestHost::traces.clear();
}

std::string i2cTopology( const std::string &devices ) {
   return "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,'devices':[" + devices + "]}}]";
}

// Loads the topology. Every assertion here checks the text that the platform was built with.
#include "OrbisGeneric/Topology.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/HostServices.h"

#include <cstring>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Topology {

std::unique_ptr<Topology> _topology;
std::map<std::string, std::shared_ptr<Device>> _topology_index;
std::map<std::string, LabelRecord> _topology_label_records;
std::string _topology_json;

namespace {

// The value of a key that the loader does not look into. Empty when there is no such key.
std::string textOf( Value const &json, const char *key ) {
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> writer( text );
   if ( json.HasMember( key ) )
      json[key].Accept( writer );
   return text.GetString();
}

} // namespace

std::shared_ptr<Component> Component::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "uid" ) );
   auto component = std::make_shared<Component>();
   component->uid = json["uid"].GetUint();
   return component;
}

std::shared_ptr<Device> Device::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   auto device = std::make_shared<Device>();
   device->did = json["did"].GetUint();
   if ( json.HasMember( "driver" ) ) // the device object is also a device-argument document
      device->args = Drivers::DriverArgs::fromJSON( json );
   if ( json.HasMember( "components" ) ) {
      const Value &components = json["components"];
      for ( auto it = components.Begin(); it != components.End(); ++it ) {
         assert( it->IsObject() );
         device->components.push_back( Component::fromJSON( *it ) );
      }
   }
   if ( json.HasMember( "label" ) ) {
      const char *label = json["label"].GetString();
      _topology_index[label] = device;
      _topology_label_records[label] = { textOf( json, "address" ), nullptr };
   }
   return device;
}

std::shared_ptr<Mux> Mux::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   auto mux = std::make_shared<Mux>();
   mux->did = json["did"].GetUint();
   if ( json.HasMember( "busses" ) ) {
      const Value &busses = json["busses"];
      for ( auto it = busses.Begin(); it != busses.End(); ++it ) {
         assert( it->IsObject() );
         auto bus = Bus::fromJSON( *it );
         mux->busses[bus->id] = bus; // a later bus with the same id replaces the earlier one
      }
   }
   return mux;
}

std::shared_ptr<Bus> Bus::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "id" ) );
   auto bus = std::make_shared<Bus>();
   bus->id = static_cast<uint32_t>( json["id"].GetInt() );
   if ( json.HasMember( "devices" ) ) {
      const Value &devices = json["devices"];
      for ( auto it = devices.Begin(); it != devices.End(); ++it ) {
         assert( it->IsObject() );
         bus->devices.push_back( Device::fromJSON( *it ) );
      }
   }
   if ( json.HasMember( "muxes" ) ) {
      const Value &muxes = json["muxes"];
      for ( auto it = muxes.Begin(); it != muxes.End(); ++it ) {
         assert( it->IsObject() );
         bus->muxes.push_back( Mux::fromJSON( *it ) );
      }
   }
   return bus;
}

std::shared_ptr<Accelerator> Accelerator::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "id" ) );
   auto accel = std::make_shared<Accelerator>();
   accel->id = json["id"].GetUint();
   if ( json.HasMember( "busses" ) ) {
      const Value &busses = json["busses"];
      assert( busses.IsArray() );
      for ( auto it = busses.Begin(); it != busses.End(); ++it ) {
         auto bus = Bus::fromJSON( *it );
         assert( accel->busses.find( bus->id ) == accel->busses.end() );
         accel->busses[bus->id] = bus;
      }
   }
   return accel;
}

std::shared_ptr<SCD> SCD::fromJSON( Value const &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "pci" ) );
   auto scd = std::make_shared<SCD>();
   scd->pci = json["pci"].GetUint();
   if ( json.HasMember( "accelerators" ) ) {
      const Value &accels = json["accelerators"];
      assert( accels.IsArray() );
      for ( auto it = accels.Begin(); it != accels.End(); ++it ) {
         auto accel = Accelerator::fromJSON( *it );
         assert( scd->accelerators.find( accel->id ) == scd->accelerators.end() );
         scd->accelerators[accel->id] = accel;
      }
   }
   return scd;
}

std::shared_ptr<Celestica> Celestica::fromJSON( Value const &json ) {
   auto cel = std::make_shared<Celestica>();
   if ( json.HasMember( "accelerators" ) ) {
      const Value &accels = json["accelerators"];
      assert( accels.IsArray() );
      for ( auto it = accels.Begin(); it != accels.End(); ++it ) {
         auto accel = Accelerator::fromJSON( *it );
         assert( cel->accelerators.find( accel->id ) == cel->accelerators.end() );
         cel->accelerators[accel->id] = accel;
      }
   }
   return cel;
}

std::shared_ptr<I2C> I2C::fromJSON( Value const &json ) {
   assert( json.HasMember( "bus" ) );
   auto i2c = std::make_shared<I2C>();
   i2c->bus = Bus::fromJSON( json["bus"] );
   if ( json.HasMember( "simulated" ) )
      i2c->simulated = json["simulated"].GetBool();
   return i2c;
}

std::shared_ptr<IOPort> IOPort::fromJSON( Value const &json ) {
   assert( json.HasMember( "bus" ) );
   auto ioPort = std::make_shared<IOPort>();
   ioPort->bus = Bus::fromJSON( json["bus"] );
   return ioPort;
}

Topology *Topology::fromJSON( Document const &json ) {
   assert( json.IsArray() );
   auto topology = std::make_unique<Topology>();
   for ( auto it = json.Begin(); it != json.End(); ++it ) {
      assert( it->IsObject() );
      assert( it->HasMember( "type" ) );
      assert( it->HasMember( "ham" ) );
      const std::string type = ( *it )["type"].GetString();
      std::shared_ptr<MediumNode> medium;
      if ( type == "SCD" )
         medium = SCD::fromJSON( *it );
      else if ( type == "I2C" )
         medium = I2C::fromJSON( *it );
      else if ( type == "IOPort" )
         medium = IOPort::fromJSON( *it );
      else if ( type == "Celestica" )
         medium = Celestica::fromJSON( *it );
      else
         assert( false && "Unknown type" );
      medium->ham = ( *it )["ham"].GetString();
      topology->media.push_back( medium );
   }
   return topology.release();
}

int loadTopology( char const *json ) {
   if ( json == _topology_json && _topology ) {
      PL_TRACE( 2, "topology is the same as the previously loaded one (using it)" );
      return 0;
   }
   PL_TRACE( 2, "loading topology json" );
   Document document;
   document.Parse( json );
   if ( document.HasParseError() ) {
      PL_TRACE( 2, "failed to load topology from json: %s offset %d",
                rapidjson::GetParseError_En( document.GetParseError() ),
                static_cast<int>( document.GetErrorOffset() ) );
      return 3;
   }
   if ( _topology ) {
      _topology.reset();
      _topology_index.clear();
      _topology_label_records.clear();
   }
   _topology.reset( Topology::fromJSON( document ) );
   if ( !_topology ) {
      PL_TRACE( 2, "failed to create topology tree" );
      return 6;
   }
   _topology_json = json;
   return 0;
}

void fillAddressFromJSON( Value const &value, AhamAddress &addr ) {
   assert( value.IsObject() );
   assert( value.HasMember( "address" ) );
   addr = AhamAddress{};
   addr.addrSize = 1;
   addr.address = value["address"].GetUint() & 0x7F;
   if ( value.HasMember( "writeDelay" ) )
      addr.writeDelay = value["writeDelay"].GetUint() & 3;
   if ( value.HasMember( "readDelay" ) )
      addr.readDelay = value["readDelay"].GetUint() & 3;
   if ( value.HasMember( "busTimeout" ) )
      addr.busTimeout = value["busTimeout"].GetUint() & 7;
   if ( value.HasMember( "extraDelay" ) )
      addr.extraDelay = value["extraDelay"].GetUint() & 1;
   if ( value.HasMember( "addrSize" ) ) {
      addr.addrSize = value["addrSize"].GetUint() & 3;
      // The field has two bits: an "addrSize" of 4 is stored as 0. Like 0 and 3, it fails here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtype-limits"
#ifdef __clang__
#pragma GCC diagnostic ignored "-Wtautological-constant-out-of-range-compare"
#endif
      assert( addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4 );
#pragma GCC diagnostic pop
   }
   if ( value.HasMember( "accel" ) )
      addr.accel = value["accel"].GetUint() & 0x7F;
}

Drivers::DriverArgs &argumentsOf( char const *label ) {
   const Device &device = *_topology_index.at( label );
   if ( device.args )
      return *device.args;
   auto &[address, args] = _topology_label_records[label];
   if ( !args ) {
      assert( !address.empty() && "A device without driver needs an address" );
      args = std::make_shared<Drivers::DriverArgs>();
      args->did = device.did;
      args->uid = Drivers::noComponent;
      Document document;
      fillAddressFromJSON( document.Parse( address.c_str() ), args->address );
   }
   return *args;
}

} // namespace Topology

// The hardware topology: the path to every chip of the switch that has an address. It is a tree of
// media, accelerators, busses, muxes, devices and components, loaded once from JSON text.
#pragma once

#include "OrbisGeneric/AhamAddress.h"

#include <cstdint>
#include <map>
#include <memory>
#include <rapidjson/fwd.h>
#include <string>
#include <vector>

namespace Drivers {
struct DriverArgs;
}

namespace Topology {

class TopologyVisitor;
using rapidjson::Document;
using rapidjson::Value;

struct Node {
   virtual ~Node() = default;
   // Visits the children in their order, then this node. When a child returns false, the walk
   // stops: accept still visits this node, ignores the result and returns false. So a stopped walk
   // visits every ancestor of the node that stopped it, innermost first.
   virtual bool accept( TopologyVisitor *v ) const = 0;
};

struct Component : Node {
   uint32_t uid = 0;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Component> fromJSON( Value const &json );
};

struct Device : Node {
   uint32_t did = 0;
   std::shared_ptr<Drivers::DriverArgs> args; // empty unless the JSON object names a "driver"
   std::vector<std::shared_ptr<Component>> components;
   bool accept( TopologyVisitor *v ) const override;
   // Adds a device with a "label" to _topology_index. A later device with the same label replaces
   // it.
   static std::shared_ptr<Device> fromJSON( Value const &json );
};

struct Bus;

struct Mux : Node {
   uint32_t did = 0; // of the mux chip
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Mux> fromJSON( Value const &json );
};

struct Bus : Node {
   uint32_t id = 0; // below a mux: the value that is written to the mux
   std::vector<std::shared_ptr<Device>> devices;
   std::vector<std::shared_ptr<Mux>> muxes;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Bus> fromJSON( Value const &json );
};

struct Accelerator : Node {
   uint32_t id = 0;
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Accelerator> fromJSON( Value const &json );
};

struct MediumNode : Node {
   std::string ham; // type of the access method for all devices below
};

struct SCD : MediumNode {
   uint32_t unused = 0; // no JSON key sets it
   uint32_t pci = 0;
   std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<SCD> fromJSON( Value const &json );
};

struct Celestica : MediumNode {
   std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Celestica> fromJSON( Value const &json );
};

struct I2C : MediumNode {
   std::shared_ptr<Bus> bus;
   bool simulated = false;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<I2C> fromJSON( Value const &json );
};

struct IOPort : MediumNode {
   std::shared_ptr<Bus> bus;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<IOPort> fromJSON( Value const &json );
};

struct Topology : Node {
   std::vector<std::shared_ptr<MediumNode>> media;
   bool accept( TopologyVisitor *v ) const override;
   // A new tree, owned by the caller. The text is made at build time and trusted: an assertion
   // fails when its structure is wrong.
   static Topology *fromJSON( Document const &json );
};

// What a look-up by label knows of its device beside the tree, where a device that names no driver
// has no arguments.
struct LabelRecord {
   std::string address; // the device's "address" as JSON; empty without one
   std::shared_ptr<Drivers::DriverArgs>
      args; // of a device without driver, from the first look-up on
};

// The current tree, its devices by label, and the exact text that it was loaded from.
extern std::unique_ptr<Topology> _topology;
extern std::map<std::string, std::shared_ptr<Device>> _topology_index;
extern std::map<std::string, LabelRecord> _topology_label_records;
extern std::string _topology_json;

// Loads the JSON text, unless the same text is already loaded. Returns 0; 3 when it is not JSON
// (the old tree stays); 6 when the tree can't be built. A new text deletes all nodes of the old
// tree.
int loadTopology( char const *json );

// Fills addr from the "address" object of a device-argument document. Each value is cut to the
// width of its field.
void fillAddressFromJSON( Value const &value, AhamAddress &addr );

// The first device with this id in the order of the walk, or null. Needs a loaded topology.
Device *findDevice( unsigned did );

// The device with this label, or null.
Device *getDeviceByLabel( char const *label );

// The argument record of the device with this label, which must exist. A device that names no
// driver gets a record beside the tree: its device id, its "address", no component, no driver. An
// assertion fails when it has no "address", since the bus would be driven at address 0 then.
Drivers::DriverArgs &argumentsOf( char const *label );

// True: the text is a JSON object that describes a device. False: it is a label.
bool isDeviceObject( char const *text );

} // namespace Topology

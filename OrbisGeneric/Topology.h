// The hardware topology: how every addressable chip of the switch is reached. A tree of access
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
   // Walks the children in their order, then calls the visitor's visit with this node. When a child
   // answers false the walk stops: this node is still visited, its result ignored, and false
   // returned, so that every ancestor of the node that stopped the walk is visited, innermost
   // first.
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
   // Enters a device with a "label" in _topology_index; a later one of the same label replaces it.
   static std::shared_ptr<Device> fromJSON( Value const &json );
};

struct Bus;

struct Mux : Node {
   uint32_t did = 0; // of the multiplexer chip itself
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
   bool accept( TopologyVisitor *v ) const override;
   static std::shared_ptr<Mux> fromJSON( Value const &json );
};

struct Bus : Node {
   uint32_t id = 0; // below a mux: the value that the mux is set to
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
   std::string ham; // type of the hardware access method for everything below
};

struct SCD : MediumNode {
   uint32_t unused = 0; // no key of the JSON sets it
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
   // A new tree, the caller's. The text is a build-time artefact and trusted: what is structurally
   // wrong in it is an assertion failure.
   static Topology *fromJSON( Document const &json );
};

// The current tree, its devices by label, and the exact text it was loaded from.
extern std::unique_ptr<Topology> _topology;
extern std::map<std::string, std::shared_ptr<Device>> _topology_index;
extern std::string _topology_json;

// Loads the JSON text, unless it is the one loaded already. Returns 0; 3 when it is not JSON (the
// old tree stays); 6 when no tree could be built. A new text invalidates every node of the old one.
int loadTopology( char const *json );

// Fills addr from the "address" object of a device-argument document; each value is cut to the
// width of its field.
void fillAddressFromJSON( Value const &value, AhamAddress &addr );

// The first device with this id in walk order, or null. Needs a loaded topology.
Device *findDevice( unsigned did );

// The device that carries this label, or null.
Device *getDeviceByLabel( char const *label );

// Whether a device reference is written as a JSON object rather than as a label.
bool isDeviceObject( char const *text );

} // namespace Topology

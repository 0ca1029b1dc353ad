// The walk over the topology, and the searches that use it.
#include "OrbisGeneric/HostServices.h"
#include "OrbisGeneric/TopologyVisitor.h"

namespace Topology {

namespace {

const Node &child( const std::shared_ptr<MediumNode> &medium ) { return *medium; }
template <typename NodeType>
const Node &child( const std::shared_ptr<NodeType> &node ) {
   return *node;
}
template <typename NodeType>
const Node &child( const std::pair<const uint32_t, std::shared_ptr<NodeType>> &entry ) {
   return *entry.second;
}

template <typename Children>
bool acceptAll( const Children &children, TopologyVisitor *v ) {
   for ( const auto &entry : children )
      if ( !child( entry ).accept( v ) )
         return false;
   return true;
}

// Children first. A stopped walk still visits this node, and ignores its result.
template <typename NodeType>
bool visitAfter( bool childrenPassed, const NodeType *node, TopologyVisitor *v ) {
   return v->visit( node ) && childrenPassed;
}

} // namespace

bool Component::accept( TopologyVisitor *v ) const { return v->visit( this ); }
bool Device::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( components, v ), this, v );
}
bool Mux::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( busses, v ), this, v );
}
bool Bus::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( devices, v ) && acceptAll( muxes, v ), this, v );
}
bool Accelerator::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( busses, v ), this, v );
}
bool SCD::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( accelerators, v ), this, v );
}
bool Celestica::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( accelerators, v ), this, v );
}
bool I2C::accept( TopologyVisitor *v ) const { return visitAfter( bus->accept( v ), this, v ); }
bool IOPort::accept( TopologyVisitor *v ) const { return visitAfter( bus->accept( v ), this, v ); }
bool Topology::accept( TopologyVisitor *v ) const {
   return visitAfter( acceptAll( media, v ), this, v );
}

bool SearchDeviceVisitor::visit( Device const *d ) {
   if ( d->did != did )
      return true;
   PL_TRACE( 2, "Device %u found in topology", did );
   device = d;
   found = true;
   return false;
}

Device *findDevice( unsigned did ) {
   SearchDeviceVisitor search( did );
   _topology->accept( &search );
   return const_cast<Device *>( search.device ); // the caller may change the node's arguments
}

Device *getDeviceByLabel( char const *label ) {
   auto entry = _topology_index.find( label );
   return entry == _topology_index.end() ? nullptr : entry->second.get();
}

bool isDeviceObject( char const *text ) { return text[0] == '{'; }

} // namespace Topology

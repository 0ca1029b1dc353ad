#include "boardfiles/BusLoad.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace BoardFiles {

namespace {

constexpr double busyShare = 0.8;
constexpr uint32_t lastOneByteRegister = 0xFF;

void add( WireCost &sum, const WireCost &more, double times = 1 ) {
   sum.transfers += more.transfers * times;
   sum.bits += more.bits * times;
}

// A register beyond 0xFF takes two bytes on the wires, whatever the address's size says.
WireCost costOf( const TransferRule &rule, const DeviceDocument &device ) {
   Bus::Transfer transfer;
   if ( rule.isSendByte ) {
      transfer.kind = Bus::Transfer::Kind::Write;
   } else {
      const double number = rule.registerArgument.empty()
                               ? rule.registerNumber
                               : device.argumentNumber( rule.registerArgument ).value_or( 0 );
      transfer.length = rule.read;
      transfer.offsetBytes = number > lastOneByteRegister ? 2 : device.addressSize;
   }
   return { static_cast<double>( rule.times ),
            static_cast<double>( rule.times * Bus::onTheWires( transfer ).bits() ) };
}

const std::vector<Batch> &batchesOf( const TransfersRule &rule, const DeviceDocument &device ) {
   if ( rule.by.empty() )
      return rule.batches;
   static const std::vector<Batch> none;
   const Json *named = device.argument( rule.by );
   const auto text = named ? named->toText() : std::nullopt;
   const auto found = text ? rule.cases.find( *text ) : rule.cases.end();
   return found == rule.cases.end() ? none : found->second;
}

bool tells( const TransfersRule &rule ) { return !rule.batches.empty() || !rule.cases.empty(); }

bool tellsTransfers( const DriverTable &table ) {
   return std::any_of( table.drivers.begin(), table.drivers.end(), []( const auto &driver ) {
      const auto &makes = driver.second.makes;
      return std::any_of( makes.begin(), makes.end(),
                          []( const auto &kind ) { return tells( kind.second.transfers ); } );
   } );
}

class LoadCounter {
 public:
   LoadCounter( const TopologyFile &topology, const DriverTable &table,
                const std::map<Bus::RootBusId, SimulatedWires> &wires )
      : topology_( topology ), table_( table ) {
      for ( const TopologyRoot &root : topology.roots ) {
         // A file may describe a bus in pieces.
         const auto known = std::find_if( loads_.begin(), loads_.end(), [&]( const BusLoad &load ) {
            return load.bus == root.id;
         } );
         note( root.bus, static_cast<size_t>( known - loads_.begin() ) );
         if ( known != loads_.end() )
            continue;
         const auto clock = wires.find( root.id );
         loads_.push_back(
            { .bus = root.id,
              .place = root.bus.place,
              .hasWires = root.id.master != Bus::Master::IoPort,
              .clock = clock == wires.end() ? Bus::usualClock : clock->second.clock } );
      }
   }

   void count( const DeviceDocument &device, std::string_view kind,
               const std::string &reads = "" ) {
      const DriverRule &driver = table_.drivers.find( device.driver )->second;
      const KindRule &rule = driver.makes.find( kind )->second;
      const bool isFirst = made_.insert( device.did->number ).second;
      if ( isFirst && driver.poll && device.argument( driver.poll->argument ) )
         count( device, driver.poll->transfers, 1 / driver.poll->seconds, &BusLoad::polls );
      if ( !rule.transfers.once || shared_.emplace( device.did->number, kind ).second )
         count( device, rule.transfers, 1, &BusLoad::reads );
      if ( const auto own = rule.reads.find( reads ); own != rule.reads.end() )
         count( device, own->second, 1, &BusLoad::reads );
      for ( const auto &[part, partKind] : rule.nested )
         countPart( device, part, partKind );
   }

   // What is read again and again of a module. The second address of an SFP has its monitors.
   void countModule( const std::vector<std::string> &labels ) {
      const TopologyDevice *device = topology_.byLabel( labels.back() );
      DeviceDocument document;
      document.did = DeviceDocument::Id{ device->did, device->place };
      for ( const auto &[name, driver] : table_.drivers ) {
         const auto proxy = driver.makes.find( "smbus" );
         if ( proxy == driver.makes.end() )
            continue;
         const auto own = proxy->second.reads.find( labels.size() > 1 ? "sfp" : "qsfp" );
         if ( own != proxy->second.reads.end() )
            return count( document, own->second, 1, &BusLoad::modules );
      }
   }

   std::vector<BusLoad> loads() && { return std::move( loads_ ); }

 private:
   void note( const TopologyBus &bus, size_t root ) {
      for ( const TopologyDevice &device : bus.devices )
         rootOf_[device.did] = root;
      for ( const TopologyMux &mux : bus.muxes )
         for ( const TopologyBus &behind : mux.busses )
            note( behind, root );
   }

   void countPart( const DeviceDocument &device, const std::string &part,
                   const std::string &kind ) {
      const Json *text = device.parts ? device.parts->find( part ) : nullptr;
      Findings none; // it is known to be good
      if ( const auto json = text ? parseInside( *text, none ) : std::nullopt )
         count( deviceDocument( *json ), kind );
   }

   void count( const DeviceDocument &device, const TransfersRule &rule, double times,
               WireCost BusLoad::*part ) {
      const auto root = rootOf_.find( device.did->number );
      if ( root == rootOf_.end() ) // a composite is on no bus, but its parts are
         return;
      BusLoad &load = loads_[root->second];
      for ( const Batch &batch : batchesOf( rule, device ) ) {
         // Each mux on the way is set before the batch and released behind it.
         add( load.*part, selectionOf( device.did->number ), 2 * times );
         for ( const TransferRule &transfer : batch )
            add( load.*part, costOf( transfer, device ), times );
      }
   }

   // Of all muxes on the way to a device.
   WireCost selectionOf( uint32_t did ) const {
      WireCost cost;
      for ( const uint32_t mux : topology_.byDid( did )->muxes ) {
         const auto &chip = topology_.byDid( mux )->document;
         const DriverRule &driver = table_.drivers.find( chip->driver )->second;
         for ( const Batch &batch : driver.makes.find( "mux" )->second.transfers.batches )
            for ( const TransferRule &transfer : batch )
               add( cost, costOf( transfer, *chip ) );
      }
      return cost;
   }

   const TopologyFile &topology_;
   const DriverTable &table_;
   std::vector<BusLoad> loads_;
   std::map<uint32_t, size_t> rootOf_; // by did
   std::set<uint32_t> made_;           // dids with a driver object
   std::set<std::pair<uint32_t, std::string>> shared_;
};

} // namespace

WireCost BusLoad::refresh( double period ) const {
   WireCost cost;
   if ( !hasWires )
      return cost;
   add( cost, reads );
   add( cost, polls, period );
   add( cost, modules, period / std::max( period, periodOfModules ) );
   return cost;
}

std::vector<BusLoad> busLoads( const TopologyFile &topology,
                               const std::vector<BoardObject> &objects, const DriverTable &table,
                               const std::map<Bus::RootBusId, SimulatedWires> &wires ) {
   if ( !tellsTransfers( table ) )
      return {};
   LoadCounter counter( topology, table, wires );
   for ( const BoardObject &object : objects ) {
      if ( object.device )
         counter.count( *object.device, nameOf( *object.kind ), object.reads );
      if ( !object.module.empty() )
         counter.countModule( object.module );
   }
   return std::move( counter ).loads();
}

void warnOfLoads( const std::vector<BusLoad> &loads, double period, Findings &findings ) {
   for ( const BusLoad &load : loads )
      if ( load.share( period ) > busyShare )
         warn( findings, load.place,
               fmt::format( "{} is busy for {:.0f} % of the time when all objects are read every "
                            "{:g} s: read them less often (--period), or give their chips "
                            "another bus",
                            toString( load.bus ), 100 * load.share( period ), period ) );
}

} // namespace BoardFiles
